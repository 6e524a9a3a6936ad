#pragma once

#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvStrStream.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "orvdiff/registry/OrvDiffEngine.h"

class OrvDiffResult;

/// A master and the actual output that belongs to it.
struct OrvFilePair {
  std::string master;
  std::string actual;
};

/// Base of every engine that compares files: finds the masters of a report, pairs each with the
/// actual output of the same file name, has the pair compared and tells the listeners.
///
/// Masters lie in a folder "Masters" beside the report's own file. Outputs lie under
/// "../webcontent/bi/" (from the process's working folder), in a folder named after the output
/// type. For the process's one verifying thread: engines share the pattern catalogue.
class ORVDIFF_API OrvDiffFileEngine : public OrvDiffEngine {
 public:
  /// `subFolder` (null or empty: none) is a further level below both the master and the output
  /// folder. The text is not copied and must outlive the engine.
  explicit OrvDiffFileEngine(const char* subFolder);
  ~OrvDiffFileEngine() override;

  /// Compares every master of the report with its output, in the order of the masters' names.
  /// Without masters nothing is compared and nobody is told. A failing in-memory output is on disk,
  /// at the result's actual name, before any listener hears of it; on a full disk there is no such
  /// file rather than half of one. An exception of the comparison, of opening a text's file to
  /// write it or of a listener leaves the remaining masters uncompared. `OrvTestInfo` tells in
  /// which state a host has to leave an in-memory output.
  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override;

  /// Name of the folder that the report server writes this kind of output to.
  virtual std::string getOutputDirectoryTypeName() const = 0;

  /// The pairs that `verifyOutput` would compare for the report at `location`, in its order. Reads
  /// the master folder only; the outputs need not exist.
  std::vector<OrvFilePair> findPairs(const std::string& location) const;

  /// The wildcard pattern of the masters of the report at `location`, as
  /// `getMasterFileGlobExpression` gives it.
  std::string getMasterPattern(const std::string& location) const;

  /// Sets what is appended to the output folder's name; empty at first. Not while verifying.
  void setMasterAndOutputFoldersSuffix(std::string suffix);

 protected:
  /// The wildcard pattern that finds the masters of the report at `location`. The default body
  /// gives the master folder, "/", the report name and "*.pdf".
  virtual std::string getMasterFileGlobExpression(const std::string& location) const = 0;

 public:
  /// Compares one pair. `inMemoryOutput`, unless null, is the actual output, and the file need not
  /// exist; it stays owned by the host. Returns a new result, owned by the caller, never null.
  virtual OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                                     std::strstream* inMemoryOutput) = 0;

 protected:
  /// Appends the files that match `pattern`.
  virtual void globFiles(const char* pattern, std::list<std::string>& files) const;

  /// Whether `path` is a regular file that can be read.
  virtual bool doesFileExist(const std::string& path) const;

  /// "../webcontent/bi/" + type name + suffix, then "/" + sub-folder if there is one.
  std::string getOutputDirectory() const;

  /// The folder "Masters" beside `location`, then the sub-folder if there is one.
  std::string getMasterFileDirectory(const std::string& location) const;

  /// The file name of `location` without its extension.
  std::string getReportName(const std::string& location) const;

  /// The output that belongs to a master: same file name, in the output folder.
  std::string getActualFile(const std::string& masterFile) const;

  const std::string& getMasterAndOutputFoldersSuffix() const {
    return m_masterAndOutputFoldersSuffix;
  }

  /// Compares one master with its output and tells the listeners.
  void compareMaster(const std::string& masterFile, const OrvDiffListenerSet& listeners,
                     OrvTestInfo* testInfo);

  /// Tells every listener, in the set's order. A null listener raises `VELAssertError`.
  void notifyListeners(const OrvDiffListenerSet& listeners, const OrvDiffResult& result) const;

  /// Compares byte for byte; `inMemoryOutput`, unless null, takes the place of the actual file.
  /// Returns a new result, owned by the caller: a pass, a difference, or the file that cannot be
  /// opened or read as missing, the master first.
  static OrvDiffResult* areFilesIdentical(const std::string& masterName,
                                          const std::string& actualName,
                                          std::iostream* inMemoryOutput);

 public:
  /// Delivers one result to one listener after the other.
  class ORVDIFF_API Notifier {
   public:
    explicit Notifier(const OrvDiffResult& result);
    /// Raises `VELAssertError` when `listener` is null.
    void operator()(OrvDiffListener* const listener) const;

   private:
    const OrvDiffResult& m_result;
  };

 private:
  const char* m_subFolder;
  std::string m_masterAndOutputFoldersSuffix;
};

#pragma once

#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvStrStream.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "orvdiff/registry/OrvDiffEngine.h"

class OrvDiffResult;

/// A master and the actual output to compare with it.
struct OrvFilePair {
  std::string master;
  std::string actual;
};

/// Base of every engine that compares files: finds a report's masters, pairs each with the actual
/// output of the same file name, compares the pairs and notifies the listeners.
///
/// Masters are in a folder "Masters" beside the report's own file. Outputs are in a folder named
/// after the output type, below "../webcontent/bi/" (relative to the process's working folder).
/// For the process's one verifying thread: engines share the pattern catalogue.
class ORVDIFF_API OrvDiffFileEngine : public OrvDiffEngine {
 public:
  /// `subFolder` (null or empty: none) is one more level below both the master and the output
  /// folder. The text is not copied and must outlive the engine.
  explicit OrvDiffFileEngine(const char* subFolder);
  ~OrvDiffFileEngine() override;

  /// Compares every master of the report with its output, in order of the masters' names, and
  /// notifies the listeners of each result. A report without masters has no results.
  ///
  /// A failing in-memory output is written to the result's actual name before any listener is
  /// notified; if the disk is full, that file is missing rather than incomplete. An exception from
  /// the comparison, from opening that file for a text, or from a listener ends the verification:
  /// the remaining masters are not compared. `OrvTestInfo` says in which state the host must leave
  /// an in-memory output.
  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override;

  /// Name of the folder that the report server writes this kind of output to.
  virtual std::string getOutputDirectoryTypeName() const = 0;

  /// The pairs that `verifyOutput` would compare for the report at `location`, in the same order.
  /// Reads only the master folder; the outputs need not exist.
  std::vector<OrvFilePair> findPairs(const std::string& location) const;

  /// The wildcard pattern of the masters of the report at `location`, as
  /// `getMasterFileGlobExpression` returns it.
  std::string getMasterPattern(const std::string& location) const;

  /// Sets what is appended to the output folder's name; empty by default. Do not call it during a
  /// verification.
  void setMasterAndOutputFoldersSuffix(std::string suffix);

  /// Sets the name of the folders of masters, "Masters" by default, and the folder that the output
  /// folders are in, "../webcontent/bi" by default; an empty text stands for the default. Do not
  /// call it during a verification.
  void setFolders(std::string masterFolder, std::string outputRoot);

 protected:
  /// The wildcard pattern that finds the masters of the report at `location`. The default body
  /// returns the master folder, "/", the report name and "*.pdf".
  virtual std::string getMasterFileGlobExpression(const std::string& location) const = 0;

 public:
  /// Compares two files that exist. `inMemoryOutput`, unless null, is the actual output, and the
  /// actual file need not exist; the stream stays owned by the host. Returns a new result, owned by
  /// the caller, never null.
  virtual OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                                     std::strstream* inMemoryOutput) = 0;

 protected:
  /// Appends the files that match `pattern`.
  virtual void globFiles(const char* pattern, std::list<std::string>& files) const;

  /// Whether `path` is a regular file that can be read.
  virtual bool doesFileExist(const std::string& path) const;

 public:
  /// Does for one pair what `verifyOutput` does for each, but notifies nobody: takes the output
  /// from `testInfo` (may be null) if the host holds it in memory, reports a missing output as
  /// such, else calls `performDiff`, and writes a failing in-memory output to disk. Returns a new
  /// result, owned by the caller, never null; raises what `performDiff` and the writing raise.
  virtual OrvDiffResult* comparePair(const OrvFilePair& pair, OrvTestInfo* testInfo);

  /// The patterns by which both texts are normalised before they are compared: an empty list if
  /// only carriage returns are removed, null if the engine does not compare normalised texts. The
  /// engine owns the list and keeps the patterns of the catalogue alive.
  virtual const OrvPatternList* getCleansingPatterns() const;

 protected:
  /// "../webcontent/bi/" + type name + suffix, then "/" + sub-folder if there is one.
  std::string getOutputDirectory() const;

  /// The folder "Masters" beside `location`, then the sub-folder if there is one.
  std::string getMasterFileDirectory(const std::string& location) const;

  /// The file name of `location` without its extension.
  std::string getReportName(const std::string& location) const;

  /// The output that belongs to a master: the same file name in the output folder.
  std::string getActualFile(const std::string& masterFile) const;

  const std::string& getMasterAndOutputFoldersSuffix() const {
    return m_masterAndOutputFoldersSuffix;
  }

  /// Compares one master with its output and notifies the listeners.
  void compareMaster(const std::string& masterFile, const OrvDiffListenerSet& listeners,
                     OrvTestInfo* testInfo);

  /// Notifies every listener, in the set's order. A null listener raises `VELAssertError`.
  void notifyListeners(const OrvDiffListenerSet& listeners, const OrvDiffResult& result) const;

  /// Compares byte for byte; `inMemoryOutput`, unless null, replaces the actual file. Returns a new
  /// result, owned by the caller: a pass, a difference, or the file that cannot be opened or read
  /// as missing, the master first.
  static OrvDiffResult* areFilesIdentical(const std::string& masterName,
                                          const std::string& actualName,
                                          std::iostream* inMemoryOutput);

 public:
  /// Delivers one result to one listener at a time.
  class ORVDIFF_API Notifier {
   public:
    explicit Notifier(const OrvDiffResult& result);
    /// Raises `VELAssertError` if `listener` is null.
    void operator()(OrvDiffListener* const listener) const;

   private:
    const OrvDiffResult& m_result;
  };

 private:
  const char* m_subFolder;
  std::string m_masterAndOutputFoldersSuffix;
  std::string m_masterFolder;  ///< empty: the default
  std::string m_outputRoot;    ///< likewise
};

#pragma once

#include <string>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/engine/OrvFixedLayoutEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Base of the engines whose verdict is the exit status of a comparison script: 0 is a pass, any
/// other outcome, a script that cannot be run included, a difference. Only files on disk are
/// compared; a missing one, the master first, keeps the script from running.
///
/// The calling thread waits for the script, which shares its standard output and
/// error, and finds its standard input empty. A file name with a
/// character that means something to the command interpreter even inside double quotes is never
/// handed to it; such a pair is a difference.
class ORVDIFF_API OrvDiffScriptFileEngine : public OrvDiffFileEngine {
 public:
  explicit OrvDiffScriptFileEngine(const char* subFolder);
  ~OrvDiffScriptFileEngine() override;

  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

  /// The command line up to the two quoted file names: interpreter, script and options, each
  /// followed by a blank. Lets a host find out beforehand whether the script is there.
  virtual const char* getCommandPrefix() const = 0;

 private:
  /// Makes what the script needs; called when both files are there.
  virtual void prepareScript() const;
};

using OrvDiffScriptFormatEngine = OrvFixedLayoutEngine<OrvDiffScriptFileEngine>;

/// PDF documents.
class ORVDIFF_API OrvDiffPdfFileEngine : public OrvDiffScriptFormatEngine {
 public:
  explicit OrvDiffPdfFileEngine(const char* subFolder);
  ~OrvDiffPdfFileEngine() override;
  const char* getCommandPrefix() const override;
};

/// Spreadsheets. The folder suffix applies to the masters' folder too. The script writes its report
/// to one fixed file, so two comparisons must not run at once in one working folder.
class ORVDIFF_API OrvDiffXlsxFileEngine : public OrvDiffScriptFileEngine {
 public:
  explicit OrvDiffXlsxFileEngine(const char* subFolder);
  ~OrvDiffXlsxFileEngine() override;
  std::string getOutputDirectoryTypeName() const override;
  std::string getMasterFileGlobExpression(const std::string& location) const override;
  const char* getCommandPrefix() const override;

 private:
  void prepareScript() const override;
};

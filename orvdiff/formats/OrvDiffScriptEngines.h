#pragma once

#include <string>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/engine/OrvFixedLayoutEngine.h"
#include "orvdiff/orvdiff_export.h"

/// How a comparison script is run. The texts must outlive the engine.
struct OrvComparisonScript {
  const char* commandPrefix;  ///< interpreter, script and options, each followed by a blank
  const char* reportFolder;   ///< created before the script runs; null: none
};

/// Base of the engines that leave the comparison to a script: exit status 0 is a pass, everything
/// else a difference, including a script that cannot be run. Only files on disk are compared. If
/// one is missing (the master is checked first), the script does not run.
///
/// The calling thread waits for the script, which inherits standard output and error; its standard
/// input is empty. A pair with a file name that contains a character special to the command
/// interpreter inside double quotes is reported as a difference without running the script.
class ORVDIFF_API OrvDiffScriptFileEngine : public OrvDiffFileEngine {
 public:
  /// Borrows `subFolder` (null or empty: none) and the texts of `script`.
  OrvDiffScriptFileEngine(const char* subFolder, const OrvComparisonScript& script);
  ~OrvDiffScriptFileEngine() override;

  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

  /// The command line up to the two quoted file names. Lets a host check beforehand that the script
  /// exists.
  const char* getCommandPrefix() const { return m_script.commandPrefix; }

 private:
  const OrvComparisonScript m_script;
};

/// Base of an engine for one format that a script compares.
using OrvDiffScriptFormatEngine = OrvFixedLayoutEngine<OrvDiffScriptFileEngine>;

/// PDF documents.
class ORVDIFF_API OrvDiffPdfFileEngine : public OrvDiffScriptFormatEngine {
 public:
  explicit OrvDiffPdfFileEngine(const char* subFolder);
  ~OrvDiffPdfFileEngine() override;
};

/// Spreadsheets. The folder suffix applies to the master folder too. The script writes its report
/// to one fixed file, so do not run two comparisons at once in one working folder.
class ORVDIFF_API OrvDiffXlsxFileEngine : public OrvDiffScriptFileEngine {
 public:
  explicit OrvDiffXlsxFileEngine(const char* subFolder);
  ~OrvDiffXlsxFileEngine() override;
  std::string getOutputDirectoryTypeName() const override;
  std::string getMasterFileGlobExpression(const std::string& location) const override;
};

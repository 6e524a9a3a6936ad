#include "orvdiff/formats/OrvDiffScriptEngines.h"

#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELCommand.h"
#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kSpecialInDoubleQuotes = "\"$`\\\n";

constexpr OrvComparisonScript kPdfScript = {
    "python ../../src/vask/testdata/Scripts/diffpdf/diffPdfFiles.py ", nullptr};

constexpr OrvComparisonScript kXlsxScript = {
    "python ../../src/vask/testdata/Scripts/DiffXlsx/DiffXlsx.py "
    "-o ../temp/vask/testResults/DiffXlsx.mxr ",
    "../temp/vask/testResults"};

bool isPlainInDoubleQuotes(const std::string& name) {
  return name.find_first_of(kSpecialInDoubleQuotes) == std::string::npos;
}

}  // namespace

OrvDiffScriptFileEngine::OrvDiffScriptFileEngine(const char* subFolder,
                                                 const OrvComparisonScript& script)
    : OrvDiffFileEngine(subFolder), m_script(script) {}

OrvDiffScriptFileEngine::~OrvDiffScriptFileEngine() = default;

OrvDiffResult* OrvDiffScriptFileEngine::performDiff(const std::string& masterName,
                                                    const std::string& actualName,
                                                    std::strstream* /*inMemoryOutput*/) {
  for (const std::string& name : {masterName, actualName}) {
    if (!doesFileExist(name)) {
      return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, name);
    }
  }
  if (m_script.reportFolder != nullptr) {
    VELFmDir::createRecursiveDir(m_script.reportFolder);
  }
  const std::string command =
      m_script.commandPrefix + ('"' + masterName) + "\" \"" + actualName + '"';
  if (isPlainInDoubleQuotes(masterName) && isPlainInDoubleQuotes(actualName) &&
      VELCommand::run(command.c_str()) == 0) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

OrvDiffPdfFileEngine::OrvDiffPdfFileEngine(const char* subFolder)
    : OrvDiffScriptFormatEngine(subFolder, {"v5DebugPDF", "/PDF/", "*.pdf"}, kPdfScript) {}

OrvDiffPdfFileEngine::~OrvDiffPdfFileEngine() = default;

OrvDiffXlsxFileEngine::OrvDiffXlsxFileEngine(const char* subFolder)
    : OrvDiffScriptFileEngine(subFolder, kXlsxScript) {}

OrvDiffXlsxFileEngine::~OrvDiffXlsxFileEngine() = default;

std::string OrvDiffXlsxFileEngine::getOutputDirectoryTypeName() const {
  return "v5DebugXLS2007";
}

std::string OrvDiffXlsxFileEngine::getMasterFileGlobExpression(const std::string& location) const {
  return getMasterFileDirectory(location) + "/XLS2007" + getMasterAndOutputFoldersSuffix() + '/' +
         getReportName(location) + "*.xlsx";
}

#include "orvdiff/formats/OrvDiffScriptEngines.h"

#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELCommand.h"
#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kActiveInDoubleQuotes = "\"$`\\\n";
constexpr const char* kXlsxReportFolder = "../temp/vask/testResults";

bool isPlainInDoubleQuotes(const std::string& name) {
  return name.find_first_of(kActiveInDoubleQuotes) == std::string::npos;
}

}  // namespace

OrvDiffScriptFileEngine::OrvDiffScriptFileEngine(const char* subFolder)
    : OrvDiffFileEngine(subFolder) {}

OrvDiffScriptFileEngine::~OrvDiffScriptFileEngine() = default;

OrvDiffResult* OrvDiffScriptFileEngine::performDiff(const std::string& masterName,
                                                    const std::string& actualName,
                                                    std::strstream* /*inMemoryOutput*/) {
  for (const std::string& name : {masterName, actualName}) {
    if (!doesFileExist(name)) {
      return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, name);
    }
  }
  prepareScript();
  const std::string command = getCommandPrefix() + ('"' + masterName) + "\" \"" + actualName + '"';
  if (isPlainInDoubleQuotes(masterName) && isPlainInDoubleQuotes(actualName) &&
      VELCommand::run(command.c_str()) == 0) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

void OrvDiffScriptFileEngine::prepareScript() const {}

OrvDiffPdfFileEngine::OrvDiffPdfFileEngine(const char* subFolder)
    : OrvDiffScriptFormatEngine(subFolder, {"v5DebugPDF", "/PDF/", "*.pdf"}) {}

OrvDiffPdfFileEngine::~OrvDiffPdfFileEngine() = default;

const char* OrvDiffPdfFileEngine::getCommandPrefix() const {
  return "python ../../src/vask/testdata/Scripts/diffpdf/diffPdfFiles.py ";
}

OrvDiffXlsxFileEngine::OrvDiffXlsxFileEngine(const char* subFolder)
    : OrvDiffScriptFileEngine(subFolder) {}

OrvDiffXlsxFileEngine::~OrvDiffXlsxFileEngine() = default;

std::string OrvDiffXlsxFileEngine::getOutputDirectoryTypeName() const {
  return "v5DebugXLS2007";
}

std::string OrvDiffXlsxFileEngine::getMasterFileGlobExpression(const std::string& location) const {
  return getMasterFileDirectory(location) + "/XLS2007" + getMasterAndOutputFoldersSuffix() + '/' +
         getReportName(location) + "*.xlsx";
}

void OrvDiffXlsxFileEngine::prepareScript() const {
  VELFmDir::createRecursiveDir(kXlsxReportFolder);
}

const char* OrvDiffXlsxFileEngine::getCommandPrefix() const {
  return "python ../../src/vask/testdata/Scripts/DiffXlsx/DiffXlsx.py "
         "-o ../temp/vask/testResults/DiffXlsx.mxr ";
}

#include "orvdiff/formats/OrvDiffDataEngines.h"

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryText.h"

OrvDiffSingleXlsFileEngine::OrvDiffSingleXlsFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugSingleXLS", "/singleXLS/", "*.html"}) {
  for (const auto id : {OrvDiffNormalizationPatterns::eScriptElement,
                        OrvDiffNormalizationPatterns::eImageSourcePrefix}) {
    m_cleansingPatterns.add(OrvDiffNormalizationPatterns::getPattern(id));
  }
}

OrvDiffSingleXlsFileEngine::~OrvDiffSingleXlsFileEngine() = default;

OrvDiffResult* OrvDiffSingleXlsFileEngine::performDiff(const std::string& masterName,
                                                       const std::string& actualName,
                                                       std::strstream* /*inMemoryOutput*/) {
  return OrvDiffLib::textFileComparison(masterName, actualName, m_cleansingPatterns.list(), false,
                                        nullptr);
}

OrvDiffCsvFileEngine::OrvDiffCsvFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugCSV", "/CSV/", "*.csv"}) {}

OrvDiffCsvFileEngine::~OrvDiffCsvFileEngine() = default;

OrvDiffResult* OrvDiffCsvFileEngine::performDiff(const std::string& masterName,
                                                 const std::string& actualName,
                                                 std::strstream* /*inMemoryOutput*/) {
  return areFilesIdentical(masterName, actualName, nullptr);
}

OrvDiffJsonFileEngine::OrvDiffJsonFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugJSON", "/JSON/", "*.json"}) {}

OrvDiffJsonFileEngine::~OrvDiffJsonFileEngine() = default;

OrvDiffResult* OrvDiffJsonFileEngine::performDiff(const std::string& masterName,
                                                  const std::string& actualName,
                                                  std::strstream* /*inMemoryOutput*/) {
  return areFilesIdentical(masterName, actualName, nullptr);
}

OrvDiffCsiFileEngine::OrvDiffCsiFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugROM", "/", "*.csi"}) {}

OrvDiffCsiFileEngine::~OrvDiffCsiFileEngine() = default;

OrvDiffResult* OrvDiffCsiFileEngine::performDiff(const std::string& masterName,
                                                 const std::string& actualName,
                                                 std::strstream* /*inMemoryOutput*/) {
  return OrvDiffLib::textFileComparison(masterName, actualName, {}, false, nullptr);
}

OrvDiffDiTreeFileEngine::OrvDiffDiTreeFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugDI", "/", "*.di"}) {}

OrvDiffDiTreeFileEngine::~OrvDiffDiTreeFileEngine() = default;

OrvDiffResult* OrvDiffDiTreeFileEngine::performDiff(const std::string& masterName,
                                                    const std::string& actualName,
                                                    std::strstream* /*inMemoryOutput*/) {
  return OrvDiffLib::textFileComparison(masterName, actualName, {}, false, nullptr);
}

OrvDiffVmdFileEngine::OrvDiffVmdFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugVMD", "/vmd/", "*.vmd"}) {}

OrvDiffVmdFileEngine::~OrvDiffVmdFileEngine() = default;

OrvDiffResult* OrvDiffVmdFileEngine::performDiff(const std::string& masterName,
                                                 const std::string& actualName,
                                                 std::strstream* inMemoryOutput) {
  OrvFileHandle master(masterName.c_str(), "rt");
  OrvFileHandle actual(actualName.c_str(), "rt");
  OrvFileHandle& needed = inMemoryOutput != nullptr ? master : actual;
  OrvDiffResult* const missing = OrvDiffLib::checkOpenFiles(masterName, actualName, master, needed);
  if (missing != nullptr) {
    return missing;
  }
  const OrvTextBuffer masterText = OrvDiffLib::slurpFile(master);
  if (inMemoryOutput == nullptr) {
    const OrvTextBuffer actualText = OrvDiffLib::slurpFile(actual);
    return OrvDiffLib::vmdCompare(masterName, actualName, masterText.get(), actualText.get());
  }
  InMemoryText output(*inMemoryOutput);
  OrvDiffResult* const result =
      OrvDiffLib::vmdCompare(masterName, actualName, masterText.get(), output.text());
  output.unfreeze();
  return result;
}

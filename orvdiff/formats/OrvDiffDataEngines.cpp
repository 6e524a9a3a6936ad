#include "orvdiff/formats/OrvDiffDataEngines.h"

#include <optional>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryOutput.h"

namespace {

/// The list of texts that lose only their carriage returns.
const OrvPatternList* noPatterns() {
  static const OrvPatternList none;
  return &none;
}

}  // namespace

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

const OrvPatternList* OrvDiffSingleXlsFileEngine::getCleansingPatterns() const {
  return &m_cleansingPatterns.list();
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
  return OrvDiffLib::textFileComparison(masterName, actualName, *getCleansingPatterns(), false,
                                        nullptr);
}

const OrvPatternList* OrvDiffCsiFileEngine::getCleansingPatterns() const {
  return noPatterns();
}

OrvDiffDiTreeFileEngine::OrvDiffDiTreeFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugDI", "/", "*.di"}) {}

OrvDiffDiTreeFileEngine::~OrvDiffDiTreeFileEngine() = default;

OrvDiffResult* OrvDiffDiTreeFileEngine::performDiff(const std::string& masterName,
                                                    const std::string& actualName,
                                                    std::strstream* /*inMemoryOutput*/) {
  return OrvDiffLib::textFileComparison(masterName, actualName, *getCleansingPatterns(), false,
                                        nullptr);
}

const OrvPatternList* OrvDiffDiTreeFileEngine::getCleansingPatterns() const {
  return noPatterns();
}

OrvDiffVmdFileEngine::OrvDiffVmdFileEngine(const char* subFolder)
    : OrvDiffDataFormatEngine(subFolder, {"v5DebugVMD", "/vmd/", "*.vmd"}) {}

OrvDiffVmdFileEngine::~OrvDiffVmdFileEngine() = default;

OrvDiffResult* OrvDiffVmdFileEngine::performDiff(const std::string& masterName,
                                                 const std::string& actualName,
                                                 std::strstream* inMemoryOutput) {
  std::optional<InMemoryOutput> output;
  if (inMemoryOutput != nullptr) {
    output.emplace(*inMemoryOutput);
  }
  return OrvDiffLib::vmdFileComparison(masterName, actualName, output ? output->text() : nullptr);
}

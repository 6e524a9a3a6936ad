#include "orvdiff/logs/OrvDiffLogNormalized.h"

#include "orvdiff/platform/OrvWholeFile.h"
#include "orvdiff/registry/OrvDiffResult.h"

OrvDiffLogNormalized::OrvDiffLogNormalized() = default;

OrvDiffLogNormalized::~OrvDiffLogNormalized() = default;

void OrvDiffLogNormalized::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  writeNormalizedFile(result.getActualName(), ".normalized_master", result.getNormalizedMaster());
  writeNormalizedFile(result.getActualName(), ".normalized_actual", result.getNormalizedActual());
}

void OrvDiffLogNormalized::writeNormalizedFile(const std::string& baseName, const char* suffix,
                                               const char* contents) {
  OrvWholeFile::write(baseName + suffix, contents != nullptr ? contents : "");
}

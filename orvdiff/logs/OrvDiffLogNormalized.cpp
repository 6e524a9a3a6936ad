#include "orvdiff/logs/OrvDiffLogNormalized.h"

#include <fstream>

#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/registry/OrvDiffResult.h"

OrvDiffLogNormalized::OrvDiffLogNormalized() = default;

OrvDiffLogNormalized::~OrvDiffLogNormalized() = default;

void OrvDiffLogNormalized::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  writeNormalizedFile(result.getActualName(), ".normalized_master", result.getNormalizedMaster());
  writeNormalizedFile(result.getActualName(), ".normalized_actual", result.getNormalizedActual());
}

void OrvDiffLogNormalized::writeNormalizedFile(const std::string& baseName, const char* suffix,
                                               const char* contents) {
  const std::string fileName = baseName + suffix;
  std::ofstream file(fileName);
  const bool opened = file.is_open();
  file << (contents != nullptr ? contents : "");
  file.close();
  if (opened && !file) {
    VELFmDir::discardFile(fileName.c_str());
  }
}

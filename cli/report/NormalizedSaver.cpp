#include "cli/report/NormalizedSaver.h"

#include "orvdiff/platform/OrvWholeFile.h"
#include "orvdiff/registry/OrvDiffResult.h"

void NormalizedSaver::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  save(result.getActualName() + ".normalized_master", result.getNormalizedMaster());
  save(result.getActualName() + ".normalized_actual", result.getNormalizedActual());
}

void NormalizedSaver::save(const std::string& fileName, const char* text) {
  if (OrvWholeFile::replace(fileName, text != nullptr ? text : "")) {
    m_unsavedFiles.push_back(fileName);
  }
}

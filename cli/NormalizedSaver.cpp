#include "cli/NormalizedSaver.h"

#include <string_view>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/registry/OrvDiffResult.h"

void NormalizedSaver::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  m_log.comparisonNotification(result);
  check(result.getActualName() + ".normalized_master", result.getNormalizedMaster());
  check(result.getActualName() + ".normalized_actual", result.getNormalizedActual());
}

void NormalizedSaver::check(const std::string& fileName, const char* text) {
  OrvTextBuffer saved;
  unsigned int length = 0;
  const std::string_view wanted = text != nullptr ? text : "";
  if (!OrvDiffLib::readFileIntoBuffer(fileName.c_str(), saved, length) ||
      std::string_view(saved.get(), length) != wanted) {
    m_unsavedFiles.push_back(fileName);
  }
}

#include "cli/report/LogAdapters.h"

#include "cli/terminal/Printable.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

OrvTextBuffer copyOf(const char* text) {
  return text != nullptr ? OrvDiffLib::strdupnew(text) : nullptr;
}

}  // namespace

void StrictPasses::comparisonNotification(const OrvDiffResultPass& result) {
  if (dynamic_cast<const OrvDiffResultPassUpToNul*>(&result) != nullptr) {
    m_log.comparisonNotification(OrvDiffResultFail(result.getMasterName(), result.getActualName()));
  } else {
    m_log.comparisonNotification(result);
  }
}

void StrictPasses::comparisonNotification(const OrvDiffResult& result) {
  result.notifyListener(m_log);
}

void HarnessResults::comparisonNotification(const OrvDiffResultPass& result) {
  const std::string master = printable(result.getMasterName());
  const std::string actual = printable(result.getActualName());
  const auto* const cut = dynamic_cast<const OrvDiffResultPassUpToNul*>(&result);
  if (cut != nullptr) {
    m_log.comparisonNotification(OrvDiffResultFail(
        master, actual + " (only up to the NUL byte in " + printable(cut->getCutFile()) + ')'));
  } else {
    m_log.comparisonNotification(OrvDiffResultPass(master, actual));
  }
}

void HarnessResults::comparisonNotification(const OrvDiffResultFail& result) {
  m_log.comparisonNotification(
      OrvDiffResultFail(printable(result.getMasterName()), printable(result.getActualName())));
}

void HarnessResults::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  const std::string master = printable(result.getMasterName());
  const std::string actual = printable(result.getActualName());
  if (master == result.getMasterName() && actual == result.getActualName()) {
    m_log.comparisonNotification(result);  // spares copying the texts
    return;
  }
  OrvTextBuffer masterText = copyOf(result.getNormalizedMaster());
  OrvTextBuffer actualText = copyOf(result.getNormalizedActual());
  m_log.comparisonNotification(OrvDiffResultFailDiffNormalized(
      master, actual, masterText.release(), actualText.release(), result.getDiffPosition()));
}

void HarnessResults::comparisonNotification(const OrvDiffResultFailFileMissing& result) {
  m_log.comparisonNotification(OrvDiffResultFailFileMissing(printable(result.getMasterName()),
                                                            printable(result.getActualName()),
                                                            printable(result.getMissingFile())));
}

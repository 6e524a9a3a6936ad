#include "orvdiff/logs/OrvDiffMoxLog.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr std::uint64_t kExcerptLimit = 128;  // bytes; as much as a file check shows

/// Keeps the lines of one result together, and releases the log even if writing throws.
class OutputHold {
 public:
  explicit OutputHold(MOXTestHarness& harness) : m_harness(harness) { m_harness.lockOutput(true); }
  ~OutputHold() { m_harness.lockOutput(false); }
  OutputHold(const OutputHold&) = delete;
  OutputHold& operator=(const OutputHold&) = delete;

 private:
  MOXTestHarness& m_harness;
};

std::string namesOf(const OrvDiffResult& result) {
  return result.getMasterName() + " and " + result.getActualName();
}

void dumpAround(MOXTestHarness& harness, const OrvDiffResultFailDiffNormalized& result) {
  const char* masterBuffer = result.getNormalizedMaster();
  const char* actualBuffer = result.getNormalizedActual();
  VEL_ASSERT(masterBuffer);
  VEL_ASSERT(actualBuffer);
  const std::uint64_t shorter = std::min(std::strlen(masterBuffer), std::strlen(actualBuffer));
  // A position past the end of the shorter text leaves nothing to show.
  const std::uint64_t start = std::min(result.getDiffPosition(), shorter);
  const std::uint32_t position =
      VELDowncastSize::uint32(result.getDiffPosition(), "OrvDiffMoxLog", __LINE__);
  const std::uint32_t length =
      VELDowncastSize::uint32(std::min(shorter - start, kExcerptLimit), "OrvDiffMoxLog", __LINE__);
  harness.dumpDifferences(actualBuffer + start, masterBuffer + start, length, position);
}

}  // namespace

OrvDiffMoxLog::OrvDiffMoxLog() = default;
OrvDiffMoxLog::~OrvDiffMoxLog() = default;

void OrvDiffMoxLog::comparisonNotification(const OrvDiffResult& result) {
  logCheck(("Contents are equivalent: " + namesOf(result)).c_str(), result.isPassed());
}

void OrvDiffMoxLog::comparisonNotification(const OrvDiffResultFailFileMissing& result) {
  const bool isMaster = result.getMissingFile() == result.getMasterName();
  const std::string side = isMaster ? "Master" : "Actual";
  logCheck((side + " file is missing: " + result.getMissingFile()).c_str(), false);
}

void OrvDiffMoxLog::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  const std::string names = namesOf(result);
  logCheck(("Normalized contents are equivalent: " + names).c_str(), false);
  // The failure has been recorded by now, so a host's mistake below cannot lose it.
  MOXTestHarness* harness = getHarness();
  VEL_ASSERT(harness);
  const OutputHold hold(*harness);
  harness->logMessage((">>  FAILED: Check File: " + names + "\n").c_str(), MOXLogLevel::Minimal);
  dumpAround(*harness, result);
  harness->logMessage("\n", MOXLogLevel::Normal).flush();
}

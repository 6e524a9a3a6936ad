#include "cli/Tally.h"

#include "orvdiff/registry/OrvDiffResult.h"

void Tally::comparisonNotification(const OrvDiffResultPass& result) {
  ++passed;
  cut += dynamic_cast<const OrvDiffResultPassUpToNul*>(&result) != nullptr ? 1 : 0;
}

void Tally::comparisonNotification(const OrvDiffResultFailDiff& /*result*/) {
  ++differ;
}

void Tally::comparisonNotification(const OrvDiffResultFailFileMissing& /*result*/) {
  ++missing;
}

void Tally::comparisonNotification(const OrvDiffResultFail& /*result*/) {
  ++failed;
}

#include "cli/report/Tally.h"

#include "orvdiff/registry/OrvDiffResult.h"

void Tally::comparisonNotification(const OrvDiffResultPass& result) {
  ++(dynamic_cast<const OrvDiffResultPassUpToNul*>(&result) != nullptr ? partly : passed);
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

#include "cli/Tally.h"

void Tally::comparisonNotification(const OrvDiffResultPass& /*result*/) {
  ++passed;
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

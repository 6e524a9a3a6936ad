#pragma once

#include "cli/record/RunRecord.h"
#include "cli/terminal/Terminal.h"

/// Prints what a recorded run came to, as the run itself did at its end.
void printRecordSummary(const RunRecord& run, const Palette& palette);

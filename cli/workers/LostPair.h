#pragma once

#include "cli/record/PairRecord.h"
#include "cli/workers/WorkerPool.h"

/// Whether the verdict on a pair was known when its worker died: only how its files differ was not.
bool isCompared(const PairRecord& pair);

/// Says in `pair` what the loss of its worker cost: the verdict or, if that was known, the details
/// of the difference. `secondsPerPair` is the time that it had.
void describeLoss(const WorkerLoss& loss, double secondsPerPair, PairRecord& pair);

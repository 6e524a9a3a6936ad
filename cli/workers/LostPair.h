#pragma once

#include "cli/record/PairRecord.h"
#include "cli/workers/WorkerPool.h"

/// Says in `pair` that its comparison did not come to an end. `secondsPerPair` is what it had.
void describeLoss(const WorkerLoss& loss, double secondsPerPair, PairRecord& pair);

#pragma once

#include "cli/diff/PairDiff.h"

/// How two texts differ whose numbers may be off by the tolerance of an own format: lines that
/// belong together and differ no more than that count as equal.
Difference numbersDifference(const DiffRequest& request);

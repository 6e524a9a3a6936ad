#pragma once

#include "cli/diff/PairDiff.h"

/// What is there instead of a file that is missing: the nearest names in its folder, or in the
/// folder that lacks one on the way to it.
Difference missingDifference(const DiffRequest& request);

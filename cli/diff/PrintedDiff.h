#pragma once

#include "cli/diff/PairDiff.h"

/// What a comparison script printed about two files: all that is known of how they differ.
Difference printedDifference(const DiffRequest& request);

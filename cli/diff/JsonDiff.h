#pragma once

#include "cli/diff/PairDiff.h"

/// How two JSON files differ: values by their paths, such as "$.rows[3].total". Elements of arrays
/// are aligned before they are compared; numbers count as they are written. Without a hunk when
/// only spacing or the order of members differs, or when a file is damaged; notes say so, and the
/// texts are left to compare.
Difference jsonDifference(const DiffRequest& request);

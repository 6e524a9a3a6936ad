#pragma once

#include "cli/diff/PairDiff.h"

/// How two texts differ once their format's rules are applied, shown in the lines of both files as
/// they are. Files of other formats are compared as they are.
Difference textDifference(const DiffRequest& request);

#pragma once

#include "cli/diff/PairDiff.h"

/// Which statistics of two VMD reports differ by more than they may, and by how much too much, or
/// which line of a report could not be interpreted.
Difference vmdDifference(const DiffRequest& request);

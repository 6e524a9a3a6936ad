#pragma once

#include "cli/diff/PairDiff.h"

/// How two PNG files differ: in size, or in how many pixels, where and by how much. Without a hunk
/// when there is no such difference to show, because a picture cannot be decoded or because the
/// pixels are equal; notes say so, and the bytes are left to compare.
Difference pictureDifference(const DiffRequest& request);

#pragma once

#include "cli/diff/PairDiff.h"

/// Where the bytes of two files differ, as rows of hexadecimal digits. Stretches are told apart if
/// the files are equally long; otherwise what they start and end with alike is left out.
Difference byteDifference(const DiffRequest& request);

#pragma once

#include "cli/diff/PairDiff.h"

/// How two files of separated values differ: cells that changed, rows and columns that are only in
/// one of them, rows that moved. Rows are aligned first. Without a hunk when only the spelling
/// differs (quotes, separators, line ends), or when the files are too long for that; notes say so,
/// and the texts are left to compare.
Difference tableDifference(const DiffRequest& request);

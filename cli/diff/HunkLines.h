#pragma once

#include <cstddef>
#include <vector>

#include "cli/diff/TextHunks.h"
#include "cli/record/Difference.h"

/// The lines of a hunk as they are in the files, with `context` lines of the master around the
/// changes. Of many lines only the first ones are shown.
std::vector<DiffLine> hunkLines(const ComparedFile& a, const ComparedFile& b, const TextHunk& hunk,
                                std::size_t context);

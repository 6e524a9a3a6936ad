#pragma once

#include "cli/record/PairRecord.h"

class OrvDiffFileEngine;

/// Normalises both files of `record` once more, as `engine` does, and notes which rules changed one
/// of them and the hashes of what is left. Does nothing for engines that do not compare normalised
/// texts, and for files that can no longer be read.
void applyRules(const OrvDiffFileEngine& engine, PairRecord& record);

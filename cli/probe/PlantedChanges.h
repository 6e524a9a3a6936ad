#pragma once

#include <cstddef>
#include <vector>

#include "cli/probe/ProposalCheck.h"

/// Plants changes as `checkProposals` says, and adds to `check` how many there were and which of
/// them `patterns` hide.
void plantChanges(const OrvPatternList& patterns, const PlacesByFile& places, RunTexts& texts,
                  ProposalCheck& check);

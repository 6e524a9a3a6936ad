#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/probe/Proposals.h"
#include "cli/probe/RunTexts.h"
#include "cli/probe/Variation.h"

/// A difference that remains with all proposals applied, wherever it is.
struct Unexplained {
  std::string textA;  ///< what the first run has
  std::string textB;
  std::size_t run;    ///< that `textB` is from
  std::string where;  ///< its first place in the first run's file, "file:line:column"
  std::size_t places;
  std::size_t files;
  Declined declined;
};

/// A change that was made to see whether it is still found, and was not.
struct MissedChange {
  std::string where;
  std::string from;
  std::string to;
  std::string context;
};

/// What the proposals, added to the format's patterns, achieve.
struct ProposalCheck {
  std::vector<Unexplained> unexplained;  ///< most places first
  std::size_t unexplainedPlaces = 0;
  std::size_t differingFiles = 0;  ///< in which something remains
  std::size_t planted = 0;
  std::vector<MissedChange> missed;
};

/// Applies the proposals to all runs and compares them again; then plants changes in visible
/// numbers and words of the first run, half of them near places that vary, where a pattern that is
/// too wide would hide them. The same files always get the same changes.
ProposalCheck checkProposals(const Proposals& proposals, const PlacesByFile& places,
                             RunTexts& texts);

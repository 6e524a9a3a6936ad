#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/probe/Anchor.h"
#include "cli/probe/RunTexts.h"
#include "cli/probe/Variation.h"

/// A stretch of a text of the first run that a pattern would change although nothing varies there.
struct OtherMatch {
  std::size_t file;
  std::string text;    ///< what it would change, as normalised
  std::string before;  ///< what stands around it, as much as an anchor may hold on to
  std::string after;
};

struct Reach {
  std::size_t others = 0;           ///< all of them
  std::size_t files = 0;            ///< in which they are
  std::vector<OtherMatch> matches;  ///< the first of them
};

/// What `pattern`, whose matches are a value between the texts of `anchor`, would change in the
/// first run besides `places`; keeps at most `most` of them.
Reach reachOf(const OrvDiffNormalizationPattern& pattern, const Anchor& anchor, RunTexts& texts,
              const PlacesByFile& places, std::size_t most);

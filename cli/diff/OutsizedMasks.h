#pragma once

#include <optional>
#include <string_view>

#include "cli/record/PairRecord.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"

/// How much of a file the rules may mask before a pass is worth a warning, in percent of the file.
/// 0: any amount.
struct MaskLimits {
  double match = 20;  ///< by a single match
  double sum = 80;    ///< by all together
};

/// Files up to this length are never masked too much: a script block may well be most of a small
/// page.
constexpr std::size_t kLongestSmallFile = 2048;

/// The largest mask beyond the limits, if there is one, in a pair that passes: by share of its
/// file, a single match first. Only masks that hide a difference count. A mask that hides the same
/// in both files takes nothing from the comparison, however large it is. Raises what `OrvOriginMap`
/// raises.
std::optional<OutsizedMask> findOutsizedMask(std::string_view master, std::string_view output,
                                             const OrvPatternList& patterns,
                                             const MaskLimits& limits);

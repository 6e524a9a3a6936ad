#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvOriginMap.h"

/// A mask of the master and the one that stands for it in the output; null: there is none.
struct MaskPair {
  const OrvOriginMap::Mask* master;
  const OrvOriginMap::Mask* output;
};

/// The masks of two files side by side.
struct MaskAlignment {
  std::vector<MaskPair> pairs;  ///< every mask of both files once, roughly in their order
  bool isCoarse = false;        ///< too many to find every pair
};

/// Pairs the masks of two texts that were normalised by the same patterns: those of the same rule
/// with the same text around them, in order. Where texts differ, so that there is no such pair,
/// masks of the same rule are paired as they come. The masks belong to the maps.
MaskAlignment alignMasks(const OrvOriginMap& master, const OrvOriginMap& output);

/// Where the texts that a pair of masks hides begin to differ, counted from the masks' begins.
/// Carriage returns do not count.
struct HiddenDifference {
  std::size_t inMaster;
  std::size_t inOutput;
};

/// Nothing if the masks hide the same. Two 0 if one file has no such mask.
std::optional<HiddenDifference> findHiddenDifference(const OrvOriginMap& master,
                                                     const OrvOriginMap& output,
                                                     const MaskPair& pair);

/// What a mask, which may be null, hides in the original.
std::string_view hiddenText(const OrvOriginMap& map, const OrvOriginMap::Mask* mask);

#pragma once

#include <cstddef>
#include <vector>

#include "cli/probe/Rule.h"
#include "cli/probe/VariationGroup.h"

/// A rule that needs no anchor because it can hide nothing but what it is for.
struct UnanchoredRule {
  Rule rule;
  VariationGroup group;  ///< that it explains
  std::string example;   ///< a text that it changes
};

/// Rules for attributes that have changed places. A pattern cannot sort; but it can turn one order
/// of the same attributes into another, so there are none where there are many.
std::vector<UnanchoredRule> orderRules(const std::vector<Variation>& variations);

/// Rules for blanks, the narrowest first. A blank that only one side has is left, unless it stands
/// between two tags or at the end of a line.
std::vector<UnanchoredRule> blankRules(const std::vector<Variation>& variations);

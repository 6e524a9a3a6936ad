#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/probe/Anchor.h"
#include "cli/probe/Reach.h"
#include "cli/probe/Variation.h"

/// Variations of one kind at the same label: what one pattern may be for.
struct VariationGroup {
  std::vector<const Variation*> members;
  ValueKind kind = ValueKind::Words;
  Anchor anchor;

  std::vector<std::string> values() const;  ///< of all runs, each once
  std::size_t places() const;
  std::size_t files() const;
};

/// The anchors that a pattern for this variation can have, in the order in which to try them. Each
/// holds on to what the first does, and more. None if there is nothing near to hold on to.
std::vector<Anchor> anchorsOf(const Variation& variation);

/// Groups what has the same kind and label. A date that stands in many places, each with a label of
/// its own, as in the rows of a table, is one group by the tags or punctuation around it.
std::vector<VariationGroup> groupVariations(const std::vector<Variation>& variations);

/// The parts of a group to anchor on their own, so that their patterns match as few of `others` as
/// can be: what the group's own anchor matches although it does not vary. Few of them.
std::vector<VariationGroup> anchored(const VariationGroup& group,
                                     const std::vector<OtherMatch>& others);

/// Whether a group comes from the run, as its form, its label, its place in a link or an id, or its
/// being the same on several pages of a run says; else it may be data.
bool looksVolatile(const VariationGroup& group);

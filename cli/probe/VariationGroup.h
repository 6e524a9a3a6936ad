#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/probe/Anchor.h"
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

/// The anchors that a pattern for this variation can have, shortest first; none if there is nothing
/// near it to hold on to.
std::vector<Anchor> anchorsOf(const Variation& variation);

/// Groups what has the same kind and label. A date that stands in many places, each with a label of
/// its own, as in the rows of a table, is one group by the tags or punctuation around it.
std::vector<VariationGroup> groupVariations(const std::vector<Variation>& variations);

/// Whether a group comes from the run, as its form, its label, its place in a link or an id, or its
/// being the same on several pages of a run says; else it may be data.
bool looksVolatile(const VariationGroup& group);

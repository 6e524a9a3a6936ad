#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "orvdiff/compare/OrvOriginMap.h"
#include "orvdiff/compare/pattern/Edit.h"

namespace orvdiff {

/// Sets of rules, each kept once and named by its index.
class RuleSets {
 public:
  using Set = std::vector<std::size_t>;  ///< ascending

  std::size_t single(std::size_t rule) { return intern({rule}); }
  std::size_t unite(std::size_t left, std::size_t right);
  const Set& operator[](std::size_t index) const { return *m_sets[index]; }

 private:
  std::size_t intern(const Set& set);

  std::map<Set, std::size_t> m_indices;
  std::vector<const Set*> m_sets;  ///< the keys of `m_indices`
  std::map<std::pair<std::size_t, std::size_t>, std::size_t> m_unions;
};

/// Keeps the masks of a text in terms of the original while pass after pass changes the text.
/// MaskComposer.cpp explains how.
class MaskComposer {
 public:
  using Mask = OrvOriginMap::Mask;

  /// Takes in the edits that the pass of `rule` made in the text as the passes before left it.
  /// Takes time linear in the edits and in the masks so far; none if there are no edits.
  void add(const pattern::Edits& edits, std::size_t rule);

  std::vector<Mask> takeMasks() { return std::move(m_masks); }
  RuleSets takeRuleSets() { return std::move(m_ruleSets); }

 private:
  std::vector<Mask> m_masks;  ///< `textBegin` and `textEnd` refer to the current text
  RuleSets m_ruleSets;
};

}  // namespace orvdiff

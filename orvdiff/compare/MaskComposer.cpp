// How the masks of one pass are composed with those of the passes before
//
// Between two passes, the current text is the original with some stretches, the masks, replaced:
//
//     original    kept | mask 1 | kept | mask 2 | kept
//     current     kept |  text  | kept |        | kept       (mask 2 was removed: its text is
//     empty)
//
// What lies between masks was copied, so there the offset in the original is the offset in the
// current text plus a shift, which changes only at a mask: behind mask m it is m.end - m.textEnd.
// That is the whole map; it needs memory per mask, not per byte.
//
// A pass changes the current text by edits, in order and without overlaps. An edit that touches no
// mask becomes a mask: the shift takes both its ends to the original. An edit that touches masks
// becomes one with them. It may begin in the middle of one mask's text and end in the middle of
// another's; what it leaves of those texts has no place of its own in the original, so the whole of
// both masks belongs to the result, the rest of their texts being part of what stands there
// instead. And since the edit may leave the rest of a mask's text for the next edit to touch, a
// group is masks and edits in turn, as far as each overlaps the next:
//
//     current     kept [  mask A  ] kept [ mask B ] kept
//     edits                   [ edit 1 ]    [ edit 2 ]
//     group            [------------------------------]
//
// Both ends of a group are the end of an edit in kept text or the end of a mask. In either case the
// shift before the group takes its begin, and the shift behind the last mask in it its end, to the
// original. So one formula does for groups of any shape, a single edit included.
//
// "Overlaps" is `edit.begin < mask.textEnd && mask.textBegin < edit.end`. It also has to be right
// where something is empty:
//
// - A removed mask (empty text) is in the group if the edit reaches beyond it on both sides: the
//   match runs across the place where something was removed. One at the very end of an edit stays
//   a mask of its own: the match needed nothing of it. Two masks then meet in the original.
// - An insertion (empty edit) joins a mask if it is inside the mask's text. At the edge of a mask
//   it stays alone; as a mask, its stretch of the original is empty. Where a removed mask and an
//   insertion share their place in the text, the removed one comes first. Either order would
//   replay to the same text; the masks' order in the original has to be the one in the text.
//
// The next pass sees the new masks with their places in the new text: `grown` is by how much the
// edits so far have shifted what follows. It is negative where text was removed, which unsigned
// arithmetic, being modular, takes in its stride.

#include "orvdiff/compare/MaskComposer.h"

#include <algorithm>
#include <iterator>

namespace orvdiff {
namespace {

using Mask = MaskComposer::Mask;

/// Merges the masks so far with the edits of one pass, both from front to back.
class Merger {
 public:
  Merger(const std::vector<Mask>& masks, const pattern::Edits& edits, std::size_t rule,
         RuleSets& ruleSets)
      : m_mask(masks.begin()),
        m_masksEnd(masks.end()),
        m_edit(edits.begin()),
        m_editsEnd(edits.end()),
        m_rule(rule),
        m_ownSet(ruleSets.single(rule)),
        m_ruleSets(ruleSets) {
    m_merged.reserve(masks.size() + edits.size());
  }

  std::vector<Mask> run() {
    while (m_edit != m_editsEnd) {
      while (m_mask != m_masksEnd && m_mask->textEnd <= m_edit->begin) {
        keepMask();
      }
      mergeGroup();
    }
    while (m_mask != m_masksEnd) {
      keepMask();
    }
    return std::move(m_merged);
  }

 private:
  void keepMask() {
    m_merged.push_back(*m_mask);
    m_merged.back().textBegin += m_grown;
    m_merged.back().textEnd += m_grown;
    passMask();
  }

  void passMask() {
    m_shift = m_mask->end - m_mask->textEnd;
    ++m_mask;
  }

  /// Takes the next edit and all that belongs to its group.
  void mergeGroup() {
    std::size_t begin = m_edit->begin;
    std::size_t end = 0;
    if (m_mask != m_masksEnd && overlapsNextMask(*m_edit)) {
      begin = std::min(begin, m_mask->textBegin);
    }
    Mask group{begin + m_shift, 0, begin + m_grown, 0, m_rule, m_ownSet};
    std::size_t masksEnd = 0;  // where the text of the group's last mask ends
    do {
      while (m_mask != m_masksEnd && overlapsNextMask(*m_edit)) {
        masksEnd = m_mask->textEnd;
        group.history = m_ruleSets.unite(group.history, m_mask->history);
        passMask();
      }
      m_grown += m_edit->length - (m_edit->end - m_edit->begin);
      end = std::max(m_edit->end, masksEnd);
      ++m_edit;
    } while (m_edit != m_editsEnd && m_edit->begin < masksEnd);
    group.end = end + m_shift;
    group.textEnd = end + m_grown;
    m_merged.push_back(group);
  }

  bool overlapsNextMask(const pattern::Edit& edit) const {
    return edit.begin < m_mask->textEnd && m_mask->textBegin < edit.end;
  }

  std::vector<Mask>::const_iterator m_mask;
  const std::vector<Mask>::const_iterator m_masksEnd;
  pattern::Edits::const_iterator m_edit;
  const pattern::Edits::const_iterator m_editsEnd;
  const std::size_t m_rule;
  const std::size_t m_ownSet;
  RuleSets& m_ruleSets;
  std::vector<Mask> m_merged;
  std::size_t m_shift = 0;  ///< from the old text to the original, behind the last mask passed
  std::size_t m_grown = 0;  ///< from the old text to the new one, behind the last edit passed
};

}  // namespace

std::size_t RuleSets::intern(const Set& set) {
  const auto [place, isNew] = m_indices.emplace(set, m_sets.size());
  if (isNew) {
    m_sets.push_back(&place->first);
  }
  return place->second;
}

std::size_t RuleSets::unite(std::size_t left, std::size_t right) {
  if (left == right) {
    return left;
  }
  const auto [place, isNew] = m_unions.emplace(std::make_pair(left, right), 0);
  if (isNew) {
    Set both;
    std::set_union(m_sets[left]->begin(), m_sets[left]->end(), m_sets[right]->begin(),
                   m_sets[right]->end(), std::back_inserter(both));
    place->second = intern(both);
  }
  return place->second;
}

void MaskComposer::add(const pattern::Edits& edits, std::size_t rule) {
  if (!edits.empty()) {
    m_masks = Merger(m_masks, edits, rule, m_ruleSets).run();
  }
}

}  // namespace orvdiff

#include "cli/diff/SequenceDiff.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "cli/diff/MiddleSearch.h"

// Which tokens of two sequences are the same, in bounded time and memory.
//
// The shortest script is found by walking the edit graph (Myers, "An O(ND) Difference Algorithm"),
// but N*D is too much for long texts with little in common, and the shortest script is not always
// the one that a person would write: rows of a table share most of their tokens, and the shortest
// script happily makes one new row out of halves of two old ones. So the graph is cut into boxes
// first, and only what is left in a box is searched. A box is a stretch of `a` and one of `b` that
// are to be matched with each other and with nothing else:
//
//   1. Trim what is equal at both ends.
//   2. Drop the tokens that occur on one side only. They cannot match; they would only lengthen
//      the search. This is exact: a longest common subsequence never holds them.
//   3. Tokens that occur exactly once on each side are anchors ("patience"). The longest sequence
//      of them that is in the same order on both sides is matched, and the boxes between them are
//      done likewise: what was no anchor in the large box may be one in the small box.
//   4. A box without anchors is split where a shortest script crosses its middle, found from both
//      ends at once in memory linear in the number of edits searched for. Its two halves are split
//      on, without looking for anchors again.
//
// Steps 2 and 3 change order in place: the tokens that stay are moved to the front of the box's
// stretch. Boxes never overlap, so no other box sees it; `Side::index` still knows where a token
// was. The result is a flag for each token, "matched or not", and all unmatched tokens between two
// matched pairs are one edit.
//
// Bounds. A search for the middle (4) gives up after max(256, sqrt(N)) edits and splits at the
// point that got furthest, so it costs at most that squared; nobody misses the shortest script
// there. The one budget pays for searches and anchors alike: rounds of anchors alone can be
// quadratic if each finds a single anchor next to an end. When it is spent, what is left of each
// box after trimming is marked as changed, and the result is coarse. Boxes are done from the front,
// so the budget goes to what is shown first. There is no recursion: hostile inputs make boxes as
// deep as the texts are long.

namespace {

using Index = std::uint32_t;
using Id = std::uint32_t;

/// A stretch of each side, as places in `Side::tokens`.
struct Box {
  Index beginA, endA;
  Index beginB, endB;
  bool isSearched;  ///< no anchors are to be looked for any more

  Index lengthA() const { return endA - beginA; }
  Index lengthB() const { return endB - beginB; }
};

using Match = SequenceMatch;

/// One of the sequences. Within boxes not yet done, tokens may have been moved to the front.
struct Side {
  std::vector<Id> tokens;
  std::vector<Index> index;        ///< where in the whole sequence each token was
  std::vector<std::uint8_t> kept;  ///< by place in the whole sequence: matched

  Side(const std::vector<Id>& ids, Index begin, Index end)
      : tokens(ids.begin() + begin, ids.begin() + end), index(end - begin), kept(ids.size(), 1) {
    for (Index i = 0; i < index.size(); ++i) {
      index[i] = begin + i;
    }
  }

  void drop(Index begin, Index end) {
    for (Index i = begin; i < end; ++i) {
      kept[index[i]] = 0;
    }
  }
};

/// Marks what two sequences have in common.
class Matcher {
 public:
  Matcher(Side& a, Side& b, std::size_t idCount, WorkBudget& budget)
      : m_a(a), m_b(b), m_budget(budget), m_placesA(idCount), m_placesB(idCount) {}

  /// Returns whether the budget sufficed.
  bool match(Anchors anchors) {
    m_boxes.push_back({0, static_cast<Index>(m_a.tokens.size()), 0,
                       static_cast<Index>(m_b.tokens.size()), false});
    while (!m_boxes.empty()) {
      Box box = m_boxes.back();
      m_boxes.pop_back();
      trim(box);
      if (box.lengthA() == 0 || box.lengthB() == 0) {
        drop(box);
      } else if (box.isSearched || !divide(box, anchors)) {
        search(box);
      }
    }
    return m_isWithinBudget;
  }

 private:
  // Where in a box an id occurs, from 1; none, or more than one place.
  static constexpr Index kNowhere = 0;
  static constexpr Index kManyPlaces = std::numeric_limits<Index>::max();

  void trim(Box& box) const {
    while (box.beginA < box.endA && box.beginB < box.endB &&
           m_a.tokens[box.beginA] == m_b.tokens[box.beginB]) {
      ++box.beginA;
      ++box.beginB;
    }
    while (box.beginA < box.endA && box.beginB < box.endB &&
           m_a.tokens[box.endA - 1] == m_b.tokens[box.endB - 1]) {
      --box.endA;
      --box.endB;
    }
  }

  void drop(const Box& box) {
    m_a.drop(box.beginA, box.endA);
    m_b.drop(box.beginB, box.endB);
  }

  void giveUp(const Box& box) {
    m_isWithinBudget = false;
    drop(box);
  }

  /// Drops what occurs on one side only, and divides what is left at its anchors. Returns false,
  /// with the box reduced, if it has none and needs a search.
  bool divide(Box& box, Anchors anchors) {
    if (!m_budget.spend(std::uint64_t{box.lengthA()} + box.lengthB())) {
      giveUp(box);
      return true;
    }
    note(m_placesA, m_a, box.beginA, box.endA);
    note(m_placesB, m_b, box.beginB, box.endB);
    box.endA = compact(m_a, m_placesA, m_placesB, box.beginA, box.endA);
    box.endB = compact(m_b, m_placesB, m_placesA, box.beginB, box.endB);
    std::vector<Match> matches;
    if (anchors == Anchors::Unique) {
      matches = inCommonOrder(uniqueMatches(box));
    }
    forget(box);
    if (matches.empty()) {
      trim(box);
    }
    if (matches.empty() && box.lengthA() > 0 && box.lengthB() > 0) {
      return false;
    }
    pushBetween(box, matches);
    return true;
  }

  static void note(std::vector<Index>& places, const Side& side, Index begin, Index end) {
    for (Index i = begin; i < end; ++i) {
      Index& place = places[side.tokens[i]];
      place = place == kNowhere ? i + 1 : kManyPlaces;
    }
  }

  /// Moves the tokens that the other side has too to the front, and drops the others. Returns the
  /// end of those that stay; `places` says where they are now.
  static Index compact(Side& side, std::vector<Index>& places,
                       const std::vector<Index>& otherPlaces, Index begin, Index end) {
    Index stays = begin;
    for (Index i = begin; i < end; ++i) {
      const Id id = side.tokens[i];
      if (otherPlaces[id] == kNowhere) {
        side.kept[side.index[i]] = 0;
        places[id] = kNowhere;
        continue;
      }
      side.tokens[stays] = id;
      side.index[stays] = side.index[i];
      ++stays;
      if (places[id] != kManyPlaces) {
        places[id] = stays;  // from 1
      }
    }
    return stays;
  }

  /// In the order of `a`.
  std::vector<Match> uniqueMatches(const Box& box) const {
    std::vector<Match> matches;
    for (Index i = box.beginA; i < box.endA; ++i) {
      const Id id = m_a.tokens[i];
      if (m_placesA[id] != kManyPlaces && m_placesB[id] != kManyPlaces) {
        matches.push_back({i, m_placesB[id] - 1});
      }
    }
    return matches;
  }

  /// The most of `matches`, which are in the order of `a`, that are in the order of `b` too.
  std::vector<Match> inCommonOrder(std::vector<Match> matches) {
    constexpr Index kNone = std::numeric_limits<Index>::max();
    std::vector<Index> ends;  // of the best chain of each length, as places in `matches`
    std::vector<Index> previous(matches.size(), kNone);
    std::uint64_t steps = 0;
    for (Index i = 0; i < matches.size(); ++i) {
      auto place = ends.end();
      if (!ends.empty() && matches[ends.back()].b > matches[i].b) {
        place = std::lower_bound(ends.begin(), ends.end(), matches[i].b,
                                 [&](Index end, Index b) { return matches[end].b < b; });
        steps += static_cast<std::uint64_t>(std::log2(ends.size())) + 1;
      }
      if (place != ends.begin()) {
        previous[i] = *(place - 1);
      }
      if (place == ends.end()) {
        ends.push_back(i);
      } else {
        *place = i;
      }
    }
    m_budget.spend(steps);
    std::size_t left = ends.size();
    std::vector<Match> chain(left);
    for (Index i = left == 0 ? kNone : ends.back(); i != kNone; i = previous[i]) {
      chain[--left] = matches[i];
    }
    return chain;
  }

  void forget(const Box& box) {
    for (Index i = box.beginA; i < box.endA; ++i) {
      m_placesA[m_a.tokens[i]] = kNowhere;
    }
    for (Index i = box.beginB; i < box.endB; ++i) {
      m_placesB[m_b.tokens[i]] = kNowhere;
    }
  }

  /// Divides a box at matches; what lies between them is to be done, the first box first.
  void pushBetween(const Box& box, const std::vector<Match>& matches) {
    Index endA = box.endA;
    Index endB = box.endB;
    for (auto match = matches.rbegin(); match != matches.rend(); ++match) {
      push({match->a + 1, endA, match->b + 1, endB, false});
      endA = match->a;
      endB = match->b;
    }
    push({box.beginA, endA, box.beginB, endB, false});
  }

  void push(const Box& box) {
    if (box.lengthA() == 0 || box.lengthB() == 0) {
      drop(box);
    } else {
      m_boxes.push_back(box);
    }
  }

  void search(const Box& box) {
    const auto [middle, isWithinBudget] = m_middle.find(
        &m_a.tokens[box.beginA], box.lengthA(), &m_b.tokens[box.beginB], box.lengthB(), m_budget);
    if (!isWithinBudget) {
      giveUp(box);
      return;
    }
    const Index a = box.beginA + middle.a;
    const Index b = box.beginB + middle.b;
    push({a, box.endA, b, box.endB, true});
    push({box.beginA, a, box.beginB, b, true});
  }

  Side& m_a;
  Side& m_b;
  WorkBudget& m_budget;
  std::vector<Index> m_placesA, m_placesB;  ///< by id; all nowhere between two boxes
  std::vector<Box> m_boxes;                 ///< to be done, the last one first
  MiddleSearch m_middle;
  bool m_isWithinBudget = true;
};

/// The edits that the unmatched tokens make.
std::vector<SequenceEdit> editsFrom(const std::vector<std::uint8_t>& keptA,
                                    const std::vector<std::uint8_t>& keptB) {
  std::vector<SequenceEdit> edits;
  Index a = 0;
  Index b = 0;
  while (a < keptA.size() || b < keptB.size()) {
    const SequenceEdit start = {a, a, b, b};
    while (a < keptA.size() && keptA[a] == 0) {
      ++a;
    }
    while (b < keptB.size() && keptB[b] == 0) {
      ++b;
    }
    if (a > start.beginA || b > start.beginB) {
      edits.push_back({start.beginA, a, start.beginB, b});
    } else {
      ++a;
      ++b;
    }
  }
  return edits;
}

Id greatest(const std::vector<Id>& ids) {
  return ids.empty() ? 0 : *std::max_element(ids.begin(), ids.end());
}

}  // namespace

SequenceDiff diffSequences(const std::vector<Id>& a, const std::vector<Id>& b, WorkBudget& budget,
                           Anchors anchors) {
  const auto shorter = std::min(a.size(), b.size());
  Index front = 0;
  while (front < shorter && a[front] == b[front]) {
    ++front;
  }
  Index back = 0;
  while (back < shorter - front && a[a.size() - 1 - back] == b[b.size() - 1 - back]) {
    ++back;
  }
  Side sideA(a, front, static_cast<Index>(a.size()) - back);
  Side sideB(b, front, static_cast<Index>(b.size()) - back);
  const std::size_t idCount = std::size_t{std::max(greatest(a), greatest(b))} + 1;
  const bool isExact = Matcher(sideA, sideB, idCount, budget).match(anchors);
  return {editsFrom(sideA.kept, sideB.kept), !isExact};
}

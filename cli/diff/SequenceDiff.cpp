#include "cli/diff/SequenceDiff.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

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

struct Match {
  Index a, b;
};

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

/// Finds where a shortest script crosses the middle of a box.
class MiddleSearch {
 public:
  struct Result {
    Match at;  ///< relative to the box
    bool isWithinBudget;
  };

  Result find(const Id* a, Index lengthA, const Id* b, Index lengthB, WorkBudget& budget) {
    m_lengthA = static_cast<Reach>(lengthA);
    m_lengthB = static_cast<Reach>(lengthB);
    const Reach delta = m_lengthA - m_lengthB;
    const Reach cap = capFor(m_lengthA + m_lengthB);
    m_forward.start(cap);
    m_backward.start(cap);
    const auto isEqual = [a, b](Reach x, Reach y) { return a[x] == b[y]; };
    const auto isEqualFromEnd = [=](Reach x, Reach y) {
      return a[m_lengthA - 1 - x] == b[m_lengthB - 1 - y];
    };
    for (Reach edits = 0; edits <= cap; ++edits) {
      m_steps = 0;
      const bool isOdd = delta % 2 != 0;
      if (advance(m_forward, m_backward, edits, isOdd, edits - 1, isEqual)) {
        return {{static_cast<Index>(m_x), static_cast<Index>(m_y)}, true};
      }
      if (advance(m_backward, m_forward, edits, !isOdd, edits, isEqualFromEnd)) {
        return {{static_cast<Index>(m_lengthA - m_x), static_cast<Index>(m_lengthB - m_y)}, true};
      }
      if (!budget.spend(m_steps)) {
        return {{0, 0}, false};
      }
    }
    return {furthest(cap), true};
  }

 private:
  using Reach = std::int64_t;
  static constexpr Reach kUnreached = std::numeric_limits<Reach>::min() / 2;

  /// How far in `a` each diagonal (place in `a` less place in `b`) was reached from one end.
  class Front {
   public:
    void start(Reach cap) {
      m_middle = cap + 2;
      m_reach.assign(static_cast<std::size_t>(2 * m_middle + 1), kUnreached);
      (*this)[1] = 0;  // so that the first step arrives at 0 on diagonal 0
    }
    Reach& operator[](Reach diagonal) {
      return m_reach[static_cast<std::size_t>(m_middle + diagonal)];
    }

   private:
    Reach m_middle = 0;
    std::vector<Reach> m_reach;
  };

  static Reach capFor(Reach tokens) {
    constexpr Reach kLeast = 256;
    return std::max(kLeast, static_cast<Reach>(std::sqrt(static_cast<double>(tokens))));
  }

  /// Takes `front` one edit further. Returns whether it met `other`, which has made
  /// `otherEdits` edits; if so, (m_x, m_y) is the point, seen from the front's own end.
  template <typename IsEqual>
  bool advance(Front& front, Front& other, Reach edits, bool canMeet, Reach otherEdits,
               const IsEqual& isEqual) {
    const Reach delta = m_lengthA - m_lengthB;
    const Reach lowest = -(edits - 2 * std::max<Reach>(0, edits - m_lengthB));
    const Reach highest = edits - 2 * std::max<Reach>(0, edits - m_lengthA);
    for (Reach diagonal = lowest; diagonal <= highest; diagonal += 2) {
      const Reach start = firstReach(front, diagonal);
      Reach x = start;
      Reach y = x - diagonal;
      if (x < 0) {
        front[diagonal] = kUnreached;
        continue;
      }
      while (x < m_lengthA && y < m_lengthB && isEqual(x, y)) {
        ++x;
        ++y;
      }
      front[diagonal] = x;
      m_steps += static_cast<std::uint64_t>(x - start + 1);
      const Reach opposite = delta - diagonal;
      if (canMeet && std::abs(opposite) <= otherEdits && x + other[opposite] >= m_lengthA) {
        m_x = x;
        m_y = y;
        return true;
      }
    }
    return false;
  }

  /// Where one more edit arrives on a diagonal, from its neighbours; never outside the box.
  Reach firstReach(Front& front, Reach diagonal) const {
    Reach afterDeletion = front[diagonal - 1] + 1;
    Reach afterInsertion = front[diagonal + 1];
    if (afterDeletion > m_lengthA) {
      afterDeletion = kUnreached;
    }
    if (afterInsertion - diagonal > m_lengthB) {
      afterInsertion = kUnreached;
    }
    return std::max(afterDeletion, afterInsertion);
  }

  /// The point furthest from its end, of all that were reached with `edits` edits.
  Match furthest(Reach edits) {
    Reach most = 0;
    Match best = {0, 0};
    for (Reach diagonal = -edits; diagonal <= edits; diagonal += 2) {
      for (Front* const front : {&m_forward, &m_backward}) {
        const Reach x = (*front)[diagonal];
        if (x >= 0 && 2 * x - diagonal > most) {
          most = 2 * x - diagonal;
          const bool isForward = front == &m_forward;
          best = {static_cast<Index>(isForward ? x : m_lengthA - x),
                  static_cast<Index>(isForward ? x - diagonal : m_lengthB - x + diagonal)};
        }
      }
    }
    return best;
  }

  Front m_forward, m_backward;
  Reach m_lengthA = 0, m_lengthB = 0;
  Reach m_x = 0, m_y = 0;
  std::uint64_t m_steps = 0;
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

/// An insertion or deletion that may slide: the tokens of its side, and how far it may go.
class Slide {
 public:
  Slide(const std::vector<Id>& tokens, Index begin, Index end, Index least, Index most)
      : m_tokens(tokens), m_begin(begin), m_end(end), m_least(least), m_most(most) {}

  /// By how much it has to move, forwards or (negative) backwards, to score best. Takes its steps
  /// from `steps`.
  template <typename Score>
  std::int64_t best(const Score& score, std::uint64_t& steps) const {
    Index begin = m_begin;
    Index end = m_end;
    while (begin > m_least && m_tokens[begin - 1] == m_tokens[end - 1] && steps > 0) {
      --begin;
      --end;
      --steps;
    }
    Index best = begin;
    for (int most = score(begin, end);
         end < m_most && m_tokens[begin] == m_tokens[end] && steps > 0; --steps) {
      ++begin;
      ++end;
      const int reached = score(begin, end);
      if (reached >= most) {
        most = reached;
        best = begin;
      }
    }
    return std::int64_t{best} - m_begin;
  }

 private:
  const std::vector<Id>& m_tokens;
  Index m_begin, m_end;
  Index m_least, m_most;
};

Index moved(Index place, std::int64_t by) {
  return static_cast<Index>(place + by);
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

void slideEdits(std::vector<SequenceEdit>& edits, const std::vector<Id>& a,
                const std::vector<Id>& b, const EditScore& score) {
  // What stands between two edits is passed by both; only periodic texts ask for more.
  std::uint64_t steps = 8 * (std::uint64_t{a.size()} + b.size());
  std::vector<SequenceEdit> joined;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    SequenceEdit edit = edits[i];
    const bool isInA = edit.beginB == edit.endB;
    if (isInA || edit.beginA == edit.endA) {
      const SequenceEdit before = joined.empty() ? SequenceEdit{0, 0, 0, 0} : joined.back();
      const bool isLast = i + 1 == edits.size();
      const Slide slide = isInA
                              ? Slide(a, edit.beginA, edit.endA, before.endA,
                                      isLast ? static_cast<Index>(a.size()) : edits[i + 1].beginA)
                              : Slide(b, edit.beginB, edit.endB, before.endB,
                                      isLast ? static_cast<Index>(b.size()) : edits[i + 1].beginB);
      const std::int64_t by =
          slide.best([&](Index begin, Index end) { return score(isInA, begin, end); }, steps);
      edit = {moved(edit.beginA, by), moved(edit.endA, by), moved(edit.beginB, by),
              moved(edit.endB, by)};
    }
    const bool meets =
        !joined.empty() && joined.back().endA == edit.beginA && joined.back().endB == edit.beginB;
    if (meets) {
      joined.back().endA = edit.endA;
      joined.back().endB = edit.endB;
    } else {
      joined.push_back(edit);
    }
  }
  edits = std::move(joined);
}

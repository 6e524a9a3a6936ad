#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "cli/diff/SequenceDiff.h"

// A part of SequenceDiff, which explains it.

/// A place in each of two sequences.
struct SequenceMatch {
  std::uint32_t a, b;
};

/// Finds where a shortest script crosses the middle of a box.
class MiddleSearch {
 public:
  struct Result {
    SequenceMatch at;  ///< relative to the box
    bool isWithinBudget;
  };

  Result find(const std::uint32_t* a, std::uint32_t lengthA, const std::uint32_t* b,
              std::uint32_t lengthB, WorkBudget& budget) {
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
        return {{static_cast<std::uint32_t>(m_x), static_cast<std::uint32_t>(m_y)}, true};
      }
      if (advance(m_backward, m_forward, edits, !isOdd, edits, isEqualFromEnd)) {
        return {{static_cast<std::uint32_t>(m_lengthA - m_x),
                 static_cast<std::uint32_t>(m_lengthB - m_y)},
                true};
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
  SequenceMatch furthest(Reach edits) {
    Reach most = 0;
    SequenceMatch best = {0, 0};
    for (Reach diagonal = -edits; diagonal <= edits; diagonal += 2) {
      for (Front* const front : {&m_forward, &m_backward}) {
        const Reach x = (*front)[diagonal];
        if (x >= 0 && 2 * x - diagonal > most) {
          most = 2 * x - diagonal;
          const bool isForward = front == &m_forward;
          best = {static_cast<std::uint32_t>(isForward ? x : m_lengthA - x),
                  static_cast<std::uint32_t>(isForward ? x - diagonal : m_lengthB - x + diagonal)};
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

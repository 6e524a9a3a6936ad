#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

/// A stretch of `a` that a stretch of `b` replaces. One of them may be empty, never both.
struct SequenceEdit {
  std::uint32_t beginA, endA;
  std::uint32_t beginB, endB;
};

/// Work that may still be done. A step is about one comparison of two ids.
class WorkBudget {
 public:
  static constexpr std::uint64_t kUsualSteps = 60'000'000;

  explicit WorkBudget(std::uint64_t steps = kUsualSteps) : m_left(steps) {}

  /// Takes `steps`, or all that is left. Returns whether that was enough.
  bool spend(std::uint64_t steps) {
    const bool isEnough = steps <= m_left;
    m_left -= isEnough ? steps : m_left;
    return isEnough;
  }
  std::uint64_t left() const { return m_left; }

 private:
  std::uint64_t m_left;
};

/// What turns one sequence into another.
struct SequenceDiff {
  std::vector<SequenceEdit> edits;  ///< in order; between two of them, something is equal
  bool isCoarse = false;  ///< the budget ran out: some edits may cover what is equal in both
};

enum class Anchors : std::uint8_t {
  Unique,  ///< match what occurs once on each side first: rows stay rows
  None     ///< as few tokens as possible in the edits, up to the cap on each search
};

/// Compares two sequences of ids. Equal things have equal ids, counted from 0: memory is linear in
/// the number of tokens and in the greatest id. Takes its work from `budget`, which several calls
/// may share.
SequenceDiff diffSequences(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                           WorkBudget& budget, Anchors anchors = Anchors::Unique);

/// How good the tokens [begin, end) of `a`, or else of `b`, look as one insertion or deletion.
using EditScore = std::function<int(bool isInA, std::uint32_t begin, std::uint32_t end)>;

/// Moves each insertion and deletion that could as well start earlier or later to where it scores
/// best, the last such place; joins edits that meet. Its time is linear in the number of tokens.
void slideEdits(std::vector<SequenceEdit>& edits, const std::vector<std::uint32_t>& a,
                const std::vector<std::uint32_t>& b, const EditScore& score);

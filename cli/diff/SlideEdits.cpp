#include <cstdint>
#include <utility>
#include <vector>

#include "cli/diff/SequenceDiff.h"

namespace {

using Index = std::uint32_t;
using Id = std::uint32_t;

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

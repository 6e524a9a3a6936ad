#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "orvdiff/compare/pattern/PatternProgram.h"

namespace orvdiff::pattern {

/// Finds the matches of a program in one text, in time linear in the text; LinearMatcher.cpp says
/// why. The matches are ICU's: leftmost start, alternatives in order, greedy runs longest first,
/// lazy runs shortest first, and each search resumes where the last match ended.
///
/// ICU's own search is quadratic on, say, ten thousand "<script" without an end tag, exponential on
/// "a?a?a?...b", and gives up when its stack reaches its limit. This one has no such limit.
///
/// Memory: one bit per byte of the text for each branch that has failed, and one frame for each
/// choice still open.
class LinearMatcher {
 public:
  /// Both must outlive the matcher.
  LinearMatcher(const PatternProgram& program, std::string_view text);

  struct Match {
    std::size_t begin;
    std::size_t end;
  };

  /// Finds the first match that starts at or after `from`, which must not be before the end of an
  /// earlier match.
  bool find(std::size_t from, Match& match);

 private:
  /// A choice to backtrack to: a repetition that can end elsewhere, or a branch with more choices.
  struct Frame {
    std::size_t step;
    std::size_t position;  ///< Repeat: where it currently ends; Branch: where it was entered
    std::size_t limit;     ///< Repeat: the first position where it can end; Branch: next choice
    std::size_t runEnd;    ///< greedy Repeat: the last position where it can end
  };

  /// The positions, in the latest run of a repetition that failed, from which the rest of the
  /// expression is known not to match: `first` to `last`, which is where the run ends.
  struct DeadStretch {
    std::size_t first = 1;
    std::size_t last = 0;  ///< less than `first`: no position

    bool contains(std::size_t position) const { return position >= first && position <= last; }
  };

  bool mayMatch(std::size_t from) const;
  bool nextStart(std::size_t from, std::size_t& position, std::size_t& start) const;
  std::size_t findFirstByte(std::size_t from) const;
  std::size_t findAnchor(std::size_t from) const;
  std::size_t matchAt(std::size_t start);
  bool enter(std::size_t& index, std::size_t& position);
  bool enterBranch(std::size_t& index, std::size_t position);
  std::size_t nextChoice(const PatternStep& step, std::size_t position, std::size_t choice) const;
  bool hasFailed(std::size_t branch, std::size_t position) const;
  void recordFailure(const Frame& branch);
  bool advance(const PatternStep& step, std::size_t& position) const;
  bool enterGreedy(std::size_t index, std::size_t& position);
  bool enterLazy(std::size_t index, std::size_t& position);
  bool resume(std::size_t& index, std::size_t& position);
  bool shortenGreedy(Frame& frame);
  bool lengthenLazy(Frame& frame);
  bool findLazyEnd(Frame& frame);
  std::size_t runEnd(const PatternStep& step, std::size_t position, std::size_t limit) const;
  bool isInRun(const PatternStep& step, std::size_t position) const;

  const PatternProgram& m_program;
  const std::string_view m_text;
  std::vector<Frame> m_frames;
  std::vector<DeadStretch> m_dead;  ///< by step
  /// By step: for each branch that has failed, a bit for every position from which it fails.
  std::vector<std::vector<std::uint64_t>> m_failed;
};

#ifdef ORVDIFF_COUNT_MATCHER_STEPS
/// Steps taken and bytes looked at by all matchers so far. Not part of the library: the tests
/// compile LinearMatcher.cpp once more with this macro, to check that the count grows linearly.
extern std::size_t matcherSteps;
#endif

}  // namespace orvdiff::pattern

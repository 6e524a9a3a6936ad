#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "orvdiff/compare/pattern/PatternProgram.h"

/// Finds the matches of a program in one text, in time that grows in line with the text.
///
/// The search is ICU's: leftmost start, alternatives in order, greedy runs longest first, lazy runs
/// shortest first, and a search goes on where the last match ended. What keeps it linear is that
/// every repetition and every branch remembers from which positions the rest of the expression is
/// known to fail. Whether it fails depends on nothing but the position, so what one start of a
/// match has learnt holds for all later ones. ICU's own search is quadratic on, say, ten thousand
/// "<script" without an end tag, exponential on "a?a?a?...b", and gives up where its stack reaches
/// its limit; here there is no such limit.
///
/// Memory: an eighth of the text for each branch that has failed, and one frame for each choice
/// that is still open.
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
  /// A choice to come back to: a repetition that can end elsewhere or a branch with more choices.
  struct Frame {
    std::size_t step;
    std::size_t position;  ///< Repeat: where it ends now; Branch: where it stands
    std::size_t limit;     ///< Repeat: the first position where it can end; Branch: next choice
    std::size_t runEnd;    ///< Repeat: the last position where it could end, greedy ones only
  };

  /// Positions where the rest of the expression after a repetition is known to fail: `first` to
  /// `last`, which is where the run of the repeated bytes ends. Only the latest stretch is kept: a
  /// search goes through the runs in order, so there is next to nothing to gain from older ones.
  struct DeadStretch {
    std::size_t first = 1;
    std::size_t last = 0;  ///< less than `first`: none

    bool contains(std::size_t position) const { return position >= first && position <= last; }
  };

  bool mayMatch(std::size_t from);
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
  std::vector<DeadStretch> m_dead;
  /// For each branch that has failed, a bit for every position: whether it fails from there.
  std::vector<std::vector<std::uint64_t>> m_failed;
  std::size_t m_required = 0;
  bool m_requiredIsKnown = false;
};

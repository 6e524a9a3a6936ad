#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "orvdiff/compare/pattern/TextCharacters.h"

namespace orvdiff::pattern {

/// One step of a `PatternProgram`. Steps refer to each other by index.
struct PatternStep {
  enum class Kind {
    Literal,   ///< the bytes of `literal`
    Set,       ///< one byte of `set`
    Space,     ///< one white-space character
    Boundary,  ///< between a word character and another; consumes nothing
    Repeat,    ///< bytes of `set`, at least `minimum`; then `next`
    Branch,    ///< the first of `choices` from which the rest matches
    Accept,    ///< the whole expression has matched
  };

  Kind kind = Kind::Accept;
  std::string literal;
  ByteSet set;
  std::size_t minimum = 0;
  bool lazy = false;            ///< Repeat: as few as possible instead of as many
  bool stopsAtLineEnd = false;  ///< Repeat: "." without "(?s)", which no line end matches
  /// Repeat: bytes that neither end the run nor start the literal after it.
  ByteSet skippable;
  std::vector<std::size_t> choices;
  bool isLoop = false;  ///< Branch: choices lead back to it
  std::size_t next = 0;
  /// The bytes that a match from here on may start with; all of them where it may be empty.
  ByteSet firstBytes;
};

/// How to find the places where a match can start without running the program at every byte.
struct SearchHints {
  /// A literal that every match contains; may be empty.
  std::string requiredLiteral;
  /// A literal that stands `anchorOffset` bytes into every match, or right after the leading run.
  /// If empty, a match can start at any of the program's first bytes.
  std::string anchor;
  std::size_t anchorOffset = 0;
  ByteSet anchorFollowers;     ///< the bytes that may follow the anchor
  bool hasLeadingRun = false;  ///< the first step repeats a set that the anchor does not start with
  std::string firstBytePair;   ///< the first bytes if there are at most two, else empty
};

/// A regular expression in the form that `LinearMatcher` runs. Immutable.
class PatternProgram {
 public:
  PatternProgram(std::vector<PatternStep> steps, std::size_t start, std::size_t minimumLength,
                 SearchHints hints)
      : m_steps(std::move(steps)),
        m_start(start),
        m_minimumLength(minimumLength),
        m_hints(std::move(hints)) {}

  const PatternStep& step(std::size_t index) const { return m_steps[index]; }
  std::size_t stepCount() const { return m_steps.size(); }
  std::size_t start() const { return m_start; }

  /// The number of bytes of the shortest match; at least 1.
  std::size_t minimumLength() const { return m_minimumLength; }

  const SearchHints& hints() const { return m_hints; }

  /// The first step if a match starts with a run before its anchor, else null.
  const PatternStep* leadingRun() const {
    return m_hints.hasLeadingRun ? &m_steps[m_start] : nullptr;
  }

 private:
  std::vector<PatternStep> m_steps;
  std::size_t m_start;
  std::size_t m_minimumLength;
  SearchHints m_hints;
};

}  // namespace orvdiff::pattern

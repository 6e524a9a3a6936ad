#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using ByteSet = std::bitset<256>;

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

/// A regular expression in the form that `LinearMatcher` runs: the subset of ICU's syntax that
/// normalisation patterns are made of (literals, byte classes, ".*" and ".*?", groups with
/// alternatives, "?", "*", "+", "\b", "\s"), over the bytes of a UTF-8 text.
///
/// Outside the subset is everything that needs more than bytes and positions (back references,
/// look-around, negated classes, a lone ".", non-ASCII characters), whatever the parser does not
/// know for certain, and repeated groups other than "(a...|b...)*", where each alternative starts
/// with a plain character of its own that no repetition inside the alternative takes. So
/// "( id[0-9]+)*" is inside, "(a|aa)*", "(a*)*" and "([ab]c)*" are not.
class PatternProgram {
 public:
  /// The program for an expression that ICU has accepted, or null when it is outside the subset or
  /// can match the empty text. Takes time and memory in line with the expression's length, and a
  /// bounded stack.
  static std::unique_ptr<PatternProgram> compile(std::string_view expression);

  const PatternStep& step(std::size_t index) const { return m_steps[index]; }
  std::size_t stepCount() const { return m_steps.size(); }
  std::size_t start() const { return m_start; }

  /// The number of bytes of the shortest match; at least 1.
  std::size_t minimumLength() const { return m_minimumLength; }

  /// A literal that every match contains; may be empty.
  const std::string& requiredLiteral() const { return m_requiredLiteral; }

  /// A literal that stands `anchorOffset` bytes into every match, or right after a leading run of
  /// `leadingRun` bytes. May be empty: then matches are looked for at every byte of `firstBytes`.
  const std::string& anchor() const { return m_anchor; }
  std::size_t anchorOffset() const { return m_anchorOffset; }
  /// The bytes that may follow the anchor.
  const ByteSet& anchorFollowers() const { return m_anchorFollowers; }
  /// The first step when it repeats a set that the anchor does not start with, else null.
  const PatternStep* leadingRun() const { return m_hasLeadingRun ? &m_steps[m_start] : nullptr; }
  const ByteSet& firstBytes() const { return m_steps[m_start].firstBytes; }
  /// The same when they are one or two, else empty.
  const std::string& fewFirstBytes() const { return m_fewFirstBytes; }

 private:
  friend class PatternCompiler;

  std::vector<PatternStep> m_steps;
  std::size_t m_start = 0;
  std::size_t m_minimumLength = 0;
  std::string m_requiredLiteral;
  std::string m_anchor;
  std::size_t m_anchorOffset = 0;
  ByteSet m_anchorFollowers;
  bool m_hasLeadingRun = false;
  std::string m_fewFirstBytes;
};

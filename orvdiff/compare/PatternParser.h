#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "orvdiff/compare/PatternProgram.h"

/// One element of a parsed expression and how often it may occur.
struct PatternNode {
  enum class Kind { Character, Set, Any, Space, Boundary, Group };
  using Sequence = std::vector<PatternNode>;

  Kind kind = Kind::Character;
  char character = '\0';
  ByteSet set;                         ///< Set; for Character, that character
  std::vector<Sequence> alternatives;  ///< Group
  bool optional = false;               ///< "?" or "*"
  bool repeated = false;               ///< "+" or "*"
  bool lazy = false;

  bool isPlain() const { return !optional && !repeated; }
};

/// Parses the supported subset of ICU's syntax. Whatever lies outside it makes `parse` fail.
class PatternParser {
 public:
  explicit PatternParser(std::string_view expression) : m_rest(expression) {}

  /// False when the expression is outside the subset.
  bool parse(PatternNode::Sequence& result);

  /// Whether "." also matches line ends: the expression starts with "(?s)".
  bool dotMatchesAll() const { return m_dotMatchesAll; }

 private:
  bool parseAlternatives(std::vector<PatternNode::Sequence>& alternatives);
  bool parseSequence(PatternNode::Sequence& sequence);
  bool parseAtom(PatternNode& node);
  bool parseGroup(PatternNode& node);
  bool parseSet(PatternNode& node);
  bool parseSetMember(char& member);
  bool parseEscape(PatternNode& node);
  bool parseQuantifier(PatternNode& node);
  bool takeIf(char expected);

  std::string_view m_rest;
  bool m_dotMatchesAll = false;
};

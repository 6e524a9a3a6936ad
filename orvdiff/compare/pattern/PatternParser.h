#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "orvdiff/compare/pattern/TextCharacters.h"

namespace orvdiff::pattern {

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

inline bool isPlainCharacter(const PatternNode& node) {
  return node.kind == PatternNode::Kind::Character && node.isPlain();
}

/// Parses a subset of ICU's syntax. It accepts only what it is sure to read as ICU does: `parse`
/// fails on any other expression, valid or not, and leaves it to ICU. It also leaves expressions
/// with more than a few branches to ICU, because the matcher keeps a bit map for each. That bounds
/// how deeply groups nest, too.
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
  bool parseSetRange(char first, char& last);
  bool parseSetMember(char& member);
  bool parseEscape(PatternNode& node);
  bool parseQuantifier(PatternNode& node);
  bool countBranch();
  bool takeIf(char expected);

  std::string_view m_rest;
  std::size_t m_branches = 0;  ///< groups and single elements that are optional
  bool m_dotMatchesAll = false;
};

}  // namespace orvdiff::pattern

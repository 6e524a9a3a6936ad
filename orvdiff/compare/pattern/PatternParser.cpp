#include "orvdiff/compare/pattern/PatternParser.h"

namespace orvdiff::pattern {
namespace {

constexpr std::size_t kMaximumBranches = 16;

constexpr std::string_view kDotAllFlag = "(?s)";
constexpr std::string_view kSyntaxCharacters = "\\[](){}*+?.|^$";

void setCharacter(PatternNode& node, char c) {
  node.kind = PatternNode::Kind::Character;
  node.character = c;
  node.set.set(static_cast<unsigned char>(c));
}

/// Whether a backslash before `c` makes it an ordinary character and nothing else.
bool isQuotable(char c) {
  return isAscii(c) && c > ' ' && !(c >= '0' && c <= '9') && !(c >= 'A' && c <= 'Z') &&
         !(c >= 'a' && c <= 'z');
}

}  // namespace

bool PatternParser::parse(PatternNode::Sequence& result) {
  if (m_rest.substr(0, kDotAllFlag.size()) == kDotAllFlag) {
    m_dotMatchesAll = true;
    m_rest.remove_prefix(kDotAllFlag.size());
  }
  std::vector<PatternNode::Sequence> alternatives;
  if (!parseAlternatives(alternatives) || !m_rest.empty()) {
    return false;
  }
  if (alternatives.size() == 1) {
    result = std::move(alternatives.front());
  } else {
    PatternNode group;
    group.kind = PatternNode::Kind::Group;
    group.alternatives = std::move(alternatives);
    result.push_back(std::move(group));
  }
  return true;
}

bool PatternParser::takeIf(char expected) {
  const bool found = !m_rest.empty() && m_rest.front() == expected;
  if (found) {
    m_rest.remove_prefix(1);
  }
  return found;
}

bool PatternParser::parseAlternatives(std::vector<PatternNode::Sequence>& alternatives) {
  do {
    alternatives.emplace_back();
    if (!parseSequence(alternatives.back())) {
      return false;
    }
  } while (takeIf('|'));
  return true;
}

bool PatternParser::parseSequence(PatternNode::Sequence& sequence) {
  while (!m_rest.empty() && m_rest.front() != '|' && m_rest.front() != ')') {
    PatternNode node;
    if (!parseAtom(node) || !parseQuantifier(node)) {
      return false;
    }
    sequence.push_back(std::move(node));
  }
  return true;
}

bool PatternParser::parseAtom(PatternNode& node) {
  if (takeIf('(')) {
    return parseGroup(node);
  }
  if (takeIf('[')) {
    return parseSet(node);
  }
  if (takeIf('\\')) {
    return parseEscape(node);
  }
  if (takeIf('.')) {
    node.kind = PatternNode::Kind::Any;
    node.set.set();
    return true;
  }
  const char c = m_rest.front();
  m_rest.remove_prefix(1);
  setCharacter(node, c);
  return isAscii(c) && kSyntaxCharacters.find(c) == std::string_view::npos;
}

bool PatternParser::parseGroup(PatternNode& node) {
  node.kind = PatternNode::Kind::Group;
  if (m_rest.empty() || m_rest.front() == '?' || !countBranch()) {
    return false;
  }
  return parseAlternatives(node.alternatives) && takeIf(')');
}

bool PatternParser::countBranch() {
  return ++m_branches <= kMaximumBranches;
}

/// Parses a set of characters and ranges. Nested sets, the operators "--" and "&&", and "[:", which
/// may start the name of a class, are left to ICU. A "-" is a character only next to a bracket.
bool PatternParser::parseSet(PatternNode& node) {
  node.kind = PatternNode::Kind::Set;
  if (m_rest.empty() || m_rest.front() == '^' || m_rest.front() == ']' || m_rest.front() == ':') {
    return false;
  }
  if (takeIf('-')) {
    node.set.set('-');
    if (!m_rest.empty() && m_rest.front() == '-') {
      return false;
    }
  }
  while (!takeIf(']')) {
    if (takeIf('-')) {
      node.set.set('-');
      return takeIf(']');
    }
    char first = '\0';
    char last = '\0';
    if (!parseSetMember(first) || !parseSetRange(first, last)) {
      return false;
    }
    for (auto c = static_cast<unsigned char>(first); c <= static_cast<unsigned char>(last); ++c) {
      node.set.set(c);
    }
  }
  return true;
}

/// Sets `last` to the end of the range that `first` starts; without one, to `first`.
bool PatternParser::parseSetRange(char first, char& last) {
  last = first;
  if (m_rest.size() < 2 || m_rest[0] != '-' || m_rest[1] == ']') {
    return true;
  }
  m_rest.remove_prefix(1);
  return m_rest.front() != '-' && parseSetMember(last) && last >= first;
}

bool PatternParser::parseSetMember(char& member) {
  const bool quoted = takeIf('\\');
  if (m_rest.empty()) {
    return false;
  }
  member = m_rest.front();
  m_rest.remove_prefix(1);
  if (quoted) {
    if (member == 'n' || member == 'r') {
      member = member == 'n' ? '\n' : '\r';
      return true;
    }
    return isQuotable(member);
  }
  // "[" opens a set in the set; "&" and "$" may be operators.
  return isAscii(member) && std::string_view("[&$").find(member) == std::string_view::npos;
}

bool PatternParser::parseEscape(PatternNode& node) {
  if (m_rest.empty()) {
    return false;
  }
  const char c = m_rest.front();
  m_rest.remove_prefix(1);
  switch (c) {
    case 'b':
      node.kind = PatternNode::Kind::Boundary;
      return true;
    case 's':
      node.kind = PatternNode::Kind::Space;
      return true;
    case 'n':
      setCharacter(node, '\n');
      return true;
    case 'r':
      setCharacter(node, '\r');
      return true;
    default:
      setCharacter(node, c);
      return isQuotable(c);
  }
}

bool PatternParser::parseQuantifier(PatternNode& node) {
  if (takeIf('*')) {
    node.optional = node.repeated = true;
    node.lazy = takeIf('?');
  } else if (takeIf('+')) {
    node.repeated = true;
  } else if (takeIf('?')) {
    node.optional = true;
    if (!countBranch()) {
      return false;
    }
  } else {
    return true;
  }
  // A second quantifier character would make it possessive, lazy or an error.
  return m_rest.empty() || std::string_view("*+?{").find(m_rest.front()) == std::string_view::npos;
}

}  // namespace orvdiff::pattern

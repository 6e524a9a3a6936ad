#include "orvdiff/compare/PatternParser.h"

namespace {

constexpr std::string_view kDotAllFlag = "(?s)";
constexpr std::string_view kSyntaxCharacters = "\\[](){}*+?.|^$";

bool isAscii(char c) {
  return static_cast<signed char>(c) >= 0;
}

void setCharacter(PatternNode& node, char c) {
  node.kind = PatternNode::Kind::Character;
  node.character = c;
  node.set.set(static_cast<unsigned char>(c));
}

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
  return !m_rest.empty() && m_rest.front() != '?' && parseAlternatives(node.alternatives) &&
         takeIf(')');
}

bool PatternParser::parseSet(PatternNode& node) {
  node.kind = PatternNode::Kind::Set;
  if (m_rest.empty() || m_rest.front() == '^' || m_rest.front() == ']') {
    return false;
  }
  while (!takeIf(']')) {
    char first = '\0';
    if (!parseSetMember(first)) {
      return false;
    }
    char last = first;
    const bool isRange = m_rest.size() > 1 && m_rest[0] == '-' && m_rest[1] != ']';
    if (isRange && m_rest[1] == '-') {
      return false;  // "--" takes one set from another: left to ICU
    }
    if (isRange && (!takeIf('-') || !parseSetMember(last) || last < first)) {
      return false;
    }
    for (auto c = static_cast<unsigned char>(first); c <= static_cast<unsigned char>(last); ++c) {
      node.set.set(c);
    }
  }
  return true;
}

bool PatternParser::parseSetMember(char& member) {
  if (m_rest.empty()) {
    return false;
  }
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
  // "[" nests sets, "&" and "$" can be set operators: left to ICU.
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
  } else {
    return true;
  }
  // A second quantifier character would make it possessive, lazy or an error.
  return m_rest.empty() || std::string_view("*+?{").find(m_rest.front()) == std::string_view::npos;
}

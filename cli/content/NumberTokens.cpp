#include "cli/content/NumberTokens.h"

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Bytes of characters beyond ASCII count as letters.
bool isWordByte(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace

bool NumberTokens::startsWord(std::size_t at) const {
  if (isWordByte(m_line[at])) {
    return true;
  }
  const bool isSign = m_line[at] == '-' || m_line[at] == '+';
  const std::size_t point = at + (isSign ? 1 : 0);
  const std::size_t digit = point + (point < m_line.size() && m_line[point] == '.' ? 1 : 0);
  return digit > at && digit < m_line.size() && isDigit(m_line[digit]);
}

/// Whether the word that ends before `at` does not.
bool NumberTokens::goesOn(std::size_t at) const {
  if (isWordByte(m_line[at])) {
    return true;
  }
  if (at + 1 == m_line.size()) {
    return false;
  }
  const char before = m_line[at - 1];
  const char after = m_line[at + 1];
  return m_line[at] == ':' ? isDigit(before) && isDigit(after)
                           : std::string_view(".,+-/").find(m_line[at]) != std::string_view::npos &&
                                 isWordByte(before) && isWordByte(after);
}

std::string_view NumberTokens::next() {
  const std::size_t begin = m_at++;
  if (startsWord(begin)) {
    // The bytes of a sign and a point are not looked at again: what follows is a digit.
    while (!isWordByte(m_line[m_at - 1])) {
      ++m_at;
    }
    while (m_at < m_line.size() && goesOn(m_at)) {
      ++m_at;
    }
  }
  return m_line.substr(begin, m_at - begin);
}

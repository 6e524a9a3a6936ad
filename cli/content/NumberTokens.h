#pragma once

#include <cstddef>
#include <string_view>

/// Splits a line into words and what stands between them. A word is a run of letters, digits and
/// "_", with any of ".,+-/" between two of these and ":" between two digits; a sign or a point
/// before a digit starts one. So "-1,234.5" is one word, and so are "2024-01-05", "10:30" and
/// "AB-17", which are no numbers.
class NumberTokens {
 public:
  explicit NumberTokens(std::string_view line) : m_line(line) {}

  bool isAtEnd() const { return m_at == m_line.size(); }
  /// The next word, or one byte between words. Must not be at the end.
  std::string_view next();

 private:
  bool startsWord(std::size_t at) const;
  bool goesOn(std::size_t at) const;

  std::string_view m_line;
  std::size_t m_at = 0;
};

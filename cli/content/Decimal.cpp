#include "cli/content/Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <system_error>

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// How many bytes of the start of `text` are digits.
std::size_t countDigits(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) -
                                  text.begin());
}

/// Takes the digits before the point off the start of `text`. Empty if they are not well grouped.
std::string takeInteger(std::string_view& text) {
  constexpr std::size_t kGroup = 3;
  std::size_t count = countDigits(text);
  std::string digits(text.substr(0, count));
  text.remove_prefix(count);
  if (text.empty() || text.front() != ',' || count == 0 || count > kGroup) {
    return digits;
  }
  while (!text.empty() && text.front() == ',') {
    count = countDigits(text.substr(1));
    if (count != kGroup) {
      return {};
    }
    digits += text.substr(1, kGroup);
    text.remove_prefix(1 + kGroup);
  }
  return digits;
}

/// Reads all of `text`, "e" included; 0 for an empty one, nothing for any other text.
std::optional<int> readExponent(std::string_view text) {
  constexpr int kMost = 10'000;
  if (text.empty()) {
    return 0;
  }
  const bool isMarked = text.front() == 'e' || text.front() == 'E';
  text.remove_prefix(1);
  text.remove_prefix(text.size() > 1 && text[0] == '+' && isDigit(text[1]) ? 1 : 0);
  int exponent = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, exponent);
  const bool isRead = isMarked && error == std::errc() && stop == end;
  return isRead && std::abs(exponent) <= kMost ? std::optional(exponent) : std::nullopt;
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) {
  text = withoutBlanks(text);
  if (text.empty() || text.size() > kLongestText) {
    return std::nullopt;
  }
  Decimal number;
  number.m_isNegative = text.front() == '-';
  text.remove_prefix(number.m_isNegative || text.front() == '+' ? 1 : 0);
  const bool startsWithPoint = !text.empty() && text.front() == '.';
  number.m_digits = takeInteger(text);
  if (number.m_digits.empty() && !startsWithPoint) {
    return std::nullopt;
  }
  if (!text.empty() && text.front() == '.') {
    const std::size_t count = countDigits(text.substr(1));
    number.m_digits += text.substr(1, count);
    number.m_exponent = -static_cast<int>(count);
    text.remove_prefix(1 + count);
  }
  if (number.m_digits.empty()) {
    return std::nullopt;
  }
  const std::optional<int> exponent = readExponent(text);
  if (!exponent) {
    return std::nullopt;
  }
  number.m_exponent += *exponent;
  const std::string plain =
      (number.m_isNegative ? "-" : "") + number.m_digits + 'e' + std::to_string(number.m_exponent);
  const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), number.m_nearest);
  return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

Decimal Decimal::of(double value) {
  std::array<char, 32> text = {};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  return *parse({text.data(), static_cast<std::size_t>(end - text.data())});
}

Decimal Decimal::absolute() const {
  Decimal number = *this;
  number.m_isNegative = false;
  return number;
}

/// Gives both the same exponent and as many digits.
void Decimal::align(Decimal& one, Decimal& other) {
  for (Decimal* const number : {&one, &other}) {
    const int least = std::min(one.m_exponent, other.m_exponent);
    number->m_digits.append(static_cast<std::size_t>(number->m_exponent - least), '0');
    number->m_exponent = least;
  }
  const std::size_t most = std::max(one.m_digits.size(), other.m_digits.size()) + 1;
  for (Decimal* const number : {&one, &other}) {
    number->m_digits.insert(0, most - number->m_digits.size(), '0');
  }
}

Decimal operator-(const Decimal& left, const Decimal& right) {
  Decimal result = left;
  Decimal other = right;
  Decimal::align(result, other);
  const bool isSum = left.m_isNegative != right.m_isNegative;
  if (!isSum && result.m_digits < other.m_digits) {
    std::swap(result.m_digits, other.m_digits);
    result.m_isNegative = !left.m_isNegative;
  }
  int carry = 0;  // or what is borrowed
  for (std::size_t i = result.m_digits.size(); i-- > 0;) {
    const int digit = result.m_digits[i] - '0';
    const int otherDigit = other.m_digits[i] - '0' + carry;
    const int next = isSum ? digit + otherDigit : digit - otherDigit;
    carry = isSum ? next / 10 : (next < 0 ? 1 : 0);
    result.m_digits[i] = static_cast<char>('0' + (next + 10) % 10);
  }
  return result;
}

Decimal operator*(const Decimal& left, const Decimal& right) {
  Decimal result;
  result.m_isNegative = left.m_isNegative != right.m_isNegative;
  result.m_exponent = left.m_exponent + right.m_exponent;
  result.m_digits.assign(left.m_digits.size() + right.m_digits.size(), '0');
  for (std::size_t i = left.m_digits.size(); i-- > 0;) {
    int carry = 0;
    for (std::size_t j = right.m_digits.size(); j-- > 0;) {
      char& digit = result.m_digits[i + j + 1];
      const int sum = digit - '0' + (left.m_digits[i] - '0') * (right.m_digits[j] - '0') + carry;
      digit = static_cast<char>('0' + sum % 10);
      carry = sum / 10;
    }
    result.m_digits[i] = static_cast<char>('0' + carry);
  }
  return result;
}

bool Decimal::isAtMost(const Decimal& number, const Decimal& limit) {
  Decimal one = number;
  Decimal other = limit;
  Decimal::align(one, other);
  return one.m_digits <= other.m_digits;
}

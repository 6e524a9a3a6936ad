#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A decimal number of any length, exactly as it is written. For the few numbers that a `double` is
/// too coarse for: those with many digits, and those right at the edge of a tolerance.
class Decimal {
 public:
  static constexpr std::size_t kLongestText = 1000;  ///< longer ones are no numbers

  /// Reads an optional sign, digits with an optional point, and an optional exponent, with blanks
  /// around. The digits before the point may be in groups of three, as in "1,234.5". Nothing for
  /// any other text ("NaN", "0x1F", "1,5"), and for a number beyond the range of a `double`.
  static std::optional<Decimal> parse(std::string_view text);

  /// The number that `value` is written as, in as few digits as tell it apart from all others.
  /// `value` must be finite.
  static Decimal of(double value);

  /// The nearest `double`.
  double nearest() const { return m_nearest; }

  Decimal absolute() const;
  friend Decimal operator-(const Decimal& left, const Decimal& right);
  friend Decimal operator*(const Decimal& left, const Decimal& right);

  /// Whether the one is not larger than the other; both must not be negative.
  static bool isAtMost(const Decimal& number, const Decimal& limit);

 private:
  Decimal() = default;
  static void align(Decimal& one, Decimal& other);

  bool m_isNegative = false;
  std::string m_digits;  ///< '0' to '9'; the first ones may be zeros
  int m_exponent = 0;    ///< of the last digit
  double m_nearest = 0;  ///< only of parsed numbers
};

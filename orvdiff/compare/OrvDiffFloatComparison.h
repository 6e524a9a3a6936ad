#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffResult.h"

/// Compares two texts by the numbers in them.
///
/// For outputs whose floating-point numbers are printed with slightly different last digits from
/// one platform or build to another. The n-th number of the master is compared with the n-th
/// number of the actual text; they agree when they differ by at most one in the fifteenth
/// significant digit of the master's number, 10 to the power floor(log10(|master|)) - 14, or by
/// 1e-14 where that is 0. The text around the numbers is not compared at all.
///
/// A number is an optional sign, digits with at most one point among, before or behind them, and
/// an optional exponent: "5", "5.", "+.5", "-2.5E-3". A sign right behind a number starts the next
/// one, so a date, 2020-01-02, is three numbers. Words such as "inf" and "nan" are text.
///
/// Objects hold no data, and texts are only read: one object may serve several threads, as long as
/// none of them changes a text or the global locale meanwhile.
class ORVDIFF_API OrvDiffFloatComparison {
 public:
  /// The outcome of one grammar rule.
  struct ParserResults {
    ParserResults(const char* parsedEnd, bool matched) : end(parsedEnd), ok(matched) {}

    const char* end;  ///< where parsing stopped: the first byte that is not part of the match
    bool ok;          ///< whether the rule matched
  };

  /// One side of a `Mismatch`.
  struct Number {
    bool found;          ///< false: the text holds no further number, and this is its end
    double value;        ///< as it was compared; 0 when there is none
    const char* start;   ///< first byte of the number, in the text that the caller gave
    const char* end;     ///< one past its last byte
    std::size_t line;    ///< where it starts, counted from 1
    std::size_t column;  ///< where it starts in that line, in bytes, counted from 1
  };

  /// The first pair of numbers that do not agree.
  struct Mismatch {
    Number master;
    Number actual;
    double difference;  ///< |master - actual|; 0 unless both were found
    double tolerance;   ///< the largest difference that would have passed; 0 when none would
  };

  OrvDiffFloatComparison() = default;
  virtual ~OrvDiffFloatComparison();

  /// Compares the numbers of two NUL-terminated texts, which are left as they are. The result is
  /// new, owned by the caller, and carries both names: `OrvDiffResultPass` when the texts hold
  /// equally many numbers and every pair agrees; else, for the first pair that does not agree,
  /// `OrvDiffResultFail`, or `OrvDiffResultFailDiff` when only one text has a number there.
  /// Raises `VELAssertError` for a null text.
  ///
  /// Numbers are read by the rules of the global C++ locale. A dangling exponent ("1e+") does not
  /// count, and a number too large for a double is the infinity of its sign.
  OrvDiffResult* performStringDiff(const std::string& masterName, const std::string& actualName,
                                   char* master, char* actual) const;

  /// The same comparison, for callers that show where it failed: the pair at which
  /// `performStringDiff` gives up, or nothing when the texts pass. Its pointers point into the two
  /// texts. Raises `VELAssertError` for a null text.
  std::optional<Mismatch> findFirstMismatch(const char* master, const char* actual) const;

 private:
  struct Side;  // how far the comparison has come in one text

  ParserResults parseSign(const char* text) const;
  ParserResults parseDecimal(const char* text) const;
  ParserResults parseDigits(const char* text) const;
  ParserResults parseMantissa(const char* text) const;
  ParserResults parseExponent(const char* text) const;
  ParserResults parseNumber(const char* text) const;

  double extractNumber(const char* start, const char* end) const;
  bool findNumber(const char* begin, const char* end, const char*& numberStart,
                  const char*& numberEnd) const;
  bool findNumber(const char* text, const char*& numberStart, const char*& numberEnd) const;
  const char* findNextNumber(const char* begin, const char* end, bool& found, double& value) const;

  bool compare(double master, double actual) const;
  double getTolerance(double master) const;
  int getExponent(double f) const;

  static bool my_isnan(double value);
  static bool my_finite(double value);
  static double my_infinity();

  static void skipEqualText(Side& master, Side& actual);
  Number locate(const Side& side) const;
  Mismatch describe(const Side& master, const Side& actual) const;
};

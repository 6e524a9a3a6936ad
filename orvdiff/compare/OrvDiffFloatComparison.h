#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffResult.h"

/// Compares two texts by the numbers in them, for outputs whose floating-point numbers differ in
/// their last digits from one platform or build to another.
///
/// The n-th number of the master is compared with the n-th number of the actual text. Two numbers
/// match if they differ by at most one in the fifteenth significant digit of the master's number,
/// 10 to the power floor(log10(|master|)) - 14, or by at most 1e-14 if the master's number is 0.
/// The text around the numbers is not compared.
///
/// A number is an optional sign, digits with at most one point before, among or after them, and an
/// optional exponent: "5", "5.", "+.5", "-2.5E-3". A sign directly after a number starts the next
/// one, so a date, 2020-01-02, is three numbers. Words such as "inf" and "nan" are text.
///
/// Objects have no data, and texts are only read: several threads may share one object as long as
/// none of them changes a text or the global locale at the same time.
class ORVDIFF_API OrvDiffFloatComparison {
 public:
  /// The outcome of one grammar rule.
  struct ParserResults {
    /// Sets both members.
    ParserResults(const char* parsedEnd, bool matched) : end(parsedEnd), ok(matched) {}

    const char* end;  ///< where parsing stopped: the first byte that is not part of the match
    bool ok;          ///< whether the rule matched
  };

  /// One side of a `Mismatch`.
  struct Number {
    bool found;          ///< false: the text has no further number, and this is its end
    double value;        ///< the value compared; 0 if there is no number
    const char* start;   ///< first byte of the number, in the caller's text
    const char* end;     ///< one past its last byte
    std::size_t line;    ///< where it starts, counted from 1
    std::size_t column;  ///< where it starts in that line, in bytes, counted from 1
  };

  /// The first pair of numbers that do not match.
  struct Mismatch {
    Number master;      ///< the number in the master
    Number actual;      ///< the number in the output
    double difference;  ///< |master - actual|; 0 unless both were found
    double tolerance;   ///< the largest difference that would have passed; 0 if none would
  };

  OrvDiffFloatComparison() = default;
  virtual ~OrvDiffFloatComparison();

  /// Compares the numbers of two NUL-terminated texts and leaves the texts unchanged. Returns a new
  /// result, owned by the caller, with both names: `OrvDiffResultPass` if the texts have equally
  /// many numbers and every pair matches; else, for the first pair that does not,
  /// `OrvDiffResultFail`, or `OrvDiffResultFailDiff` if only one text has a number there. A null
  /// text raises `VELAssertError`.
  ///
  /// Numbers are read by the rules of the global C++ locale. A dangling exponent ("1e+") does not
  /// count, and a number too large for a double is the infinity of its sign.
  OrvDiffResult* performStringDiff(const std::string& masterName, const std::string& actualName,
                                   char* master, char* actual) const;

  /// The same comparison for callers that show where it fails: the pair at which
  /// `performStringDiff` stops, or nothing if the texts pass. Its pointers point into the two
  /// texts. A null text raises `VELAssertError`.
  std::optional<Mismatch> findFirstMismatch(const char* master, const char* actual) const;

  /// The same, and sets `closest` to the pair that came closest to not matching: of all pairs
  /// before the mismatch, the one that uses most of its tolerance. Nothing if all were equal.
  std::optional<Mismatch> findFirstMismatch(const char* master, const char* actual,
                                            std::optional<Mismatch>& closest) const;

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
  double usedTolerance(double master, double actual) const;
  int getExponent(double f) const;

  static bool my_isnan(double value);
  static bool my_finite(double value);
  static double my_infinity();

  static void skipEqualText(Side& master, Side& actual);
  Number locate(const Side& side) const;
  Mismatch describe(const Side& master, const Side& actual) const;
};

#include "orvdiff/compare/OrvDiffFloatComparison.h"

#include <locale>

#include "tests/support/Testing.h"

namespace {

struct Row {
  std::string master, actual;
  const char* verdict;
};

void expectVerdicts(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    std::string master = row.master, actual = row.actual;
    EXPECT_EQ(described(OrvDiffFloatComparison().performStringDiff("m", "a", master.data(),
                                                                   actual.data())),
              row.verdict + std::string(" m a"))
        << row.master << " against " << row.actual;
    EXPECT_EQ(row.master + row.actual, master + actual);
  }
}

std::ostream& operator<<(std::ostream& out, const OrvDiffFloatComparison::Number& number) {
  out << number.line << ':' << number.column << ' ' << std::string(number.start, number.end);
  return number.found ? out << '=' << number.value : out << "none";
}

std::string firstMismatch(const std::string& master, const std::string& actual) {
  const auto mismatch = OrvDiffFloatComparison().findFirstMismatch(master.c_str(), actual.c_str());
  std::ostringstream out;
  out << mismatch->master << ", " << mismatch->actual << ", " << mismatch->difference << " > "
      << mismatch->tolerance;
  return out.str();
}

TEST(OrvDiffFloatComparison, FindsThePairThatUsesMostOfItsTolerance) {
  const std::string master = "1 100\n2 3", actual = "1.000000000000002 100.0000000000008\n2 4";
  std::optional<OrvDiffFloatComparison::Mismatch> closest;
  EXPECT_TRUE(OrvDiffFloatComparison().findFirstMismatch(master.c_str(), actual.c_str(), closest));
  EXPECT_EQ(std::string(closest->master.start, closest->master.end), "100");
  EXPECT_EQ(closest->actual.column, 19U);
  EXPECT_FALSE(OrvDiffFloatComparison().findFirstMismatch("1 2", "1 2.0", closest));
  EXPECT_FALSE(closest);
}

// Point for grouping and comma for decimals, as in much of Europe.
class CommaPunctuation : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(OrvDiffFloatComparison, ComparesTheNumbersOfTexts) {
  const std::string nines(400, '9');
  // clang-format off
  expectVerdicts({
      {"1e5 2.5E-3 1.E+2 +3e0 1e 1e+ 1E-x 1e-.5", "100000 0.0025 100 3 1 1 1 1 .5", "pass"},
      {". + - -. +. .e5 e+5 2020-01 --5 +-5 1.2.3", "5 +5 2020 -1 -5 -5 1.2 .3", "pass"},
      {"0x1F inf -nan Infinity \xB2 \xD9\xA3 \xEF\xBC\x95", "0 1", "pass"},
      {"1 2", "1", "diff"}, {"1", "1 2", "diff"}, {"1 2", "3", "fail"},
      {nines, "1e400", "pass"}, {nines, "-1e400", "fail"},
      {"-1e99999999999999999999", '-' + nines, "pass"}, {nines, "1.7976931348623157e308", "fail"},
      {'1' + std::string(400, '0') + "e-400", "1", "pass"},
      {"1e-400 -1e-99999999999999999999", "0 0", "pass"},
      {"4.9e-324", "2.4703282292062328e-324", "pass"},
      {"4.9e-324", "2.4703282292062327e-324", "fail"},
      {"1.0", "1.00000000000001", "pass"}, {"1.0", "1.00000000000002", "fail"},
      {"0", "-1e-14", "pass"}, {"0", "1.0000000000000002e-14", "fail"},
      {"9.99999999999999", "10.00000000000005", "fail"},
      {"10.00000000000005", "9.99999999999999", "pass"}});
  // clang-format on
}

TEST(OrvDiffFloatComparison, ReadsNumbersByTheGlobalLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
  expectVerdicts({{"1.234", "1234", "pass"},
                  {"1e 5E+", "1 5", "pass"},
                  {"-1e400 1e400", "-1e401 1e401", "pass"},
                  {"1e400", "17976931348623157e292", "fail"}});
  std::locale::global(before);
}

TEST(OrvDiffFloatComparison, ShowsTheFirstMismatch) {
  EXPECT_EQ("3:4 -4.5e1=-45, 4:1 -46=-46, 1 > 1e-13",
            firstMismatch("1 2\n\n 3 -4.5e1; 6", "1\n2\nx3\n-46 5"));
  EXPECT_EQ("1:3 2=2, 2:4 none, 0 > 0", firstMismatch("1 2", "1\nabc"));
  EXPECT_EQ("1:1 1e400=inf, 1:1 1=1, inf > 0", firstMismatch("1e400", "1"));
}

// Equal text is skipped in blocks, whose borders must not split a number.
TEST(OrvDiffFloatComparison, KeepsNumbersWholeAfterEqualText) {
  for (const std::string piece : {" ", "7", "7-", "-", "1.5e3,", "e+"}) {
    std::string common;
    for (int count = 0; count < 150; ++count, common += piece) {
      const std::string place = "1:" + std::to_string(common.size() + 1);
      EXPECT_THAT(firstMismatch(common + "-1.5", common + "-1.57 "),
                  testing::EndsWith(place + " -1.57=-1.57, 0.07 > 1e-14"));
      EXPECT_THAT(firstMismatch(common + "-2E+1", common + "-2E+2 "),
                  testing::EndsWith(place + " -2E+2=-200, 180 > 1e-13"));
    }
  }
}

TEST(OrvDiffFloatComparison, RefusesNullTexts) {
  char text[] = "1";
  EXPECT_THROW(OrvDiffFloatComparison().performStringDiff("m", "a", nullptr, text), VELAssertError);
  EXPECT_THROW(OrvDiffFloatComparison().performStringDiff("m", "a", text, nullptr), VELAssertError);
}

}  // namespace

#include "orvdiff/compare/OrvDiffFloatComparison.h"

#include <locale>

#include "tests/support/Testing.h"

namespace {

constexpr const char* kPass = "pass m a";
constexpr const char* kFail = "fail m a";
constexpr const char* kFailDiff = "diff m a";

struct Row {
  std::string master;
  std::string actual;
  const char* result;
};

void expectResults(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    std::string master = row.master;
    std::string actual = row.actual;
    EXPECT_EQ(described(OrvDiffFloatComparison().performStringDiff("m", "a", master.data(),
                                                                   actual.data())),
              row.result)
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
  if (!mismatch) return "pass";
  std::ostringstream out;
  out << mismatch->master << ", " << mismatch->actual << ", " << mismatch->difference << " > "
      << mismatch->tolerance;
  return out.str();
}

// Point for grouping and comma for decimals, as in much of Europe.
class CommaPunctuation : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(OrvDiffFloatComparison, ComparesTheNumbersOfTexts) {
  const std::string nines(400, '9');
  expectResults({
      {"1e5 2.5E-3 1.E+2 +3e0", "100000 0.0025 100 3", kPass},
      {". + - -. +. .e5 e+5 2020-01", "5 +5 2020 -1", kPass},
      {"--5 +-5 -+5 ..5 1.2.3", "-5 -5 5 .5 1.2 .3", kPass},
      {"1e 1e+ 1E-x 1e-.5", "1 1 1 1 .5", kPass},
      {"0x1F inf -nan Infinity \xB2 \xD9\xA3 \xEF\xBC\x95", "0 1", kPass},
      {"1 2", "1", kFailDiff},
      {"1", "1 2", kFailDiff},
      {"1 2", "3", kFail},
      {nines, "1e400", kPass},
      {nines, "-1e400", kFail},
      {"-1e99999999999999999999", '-' + nines, kPass},
      {nines, "1.7976931348623157e308", kFail},
      {'1' + std::string(400, '0') + "e-400", "1", kPass},
      {"1e-400 -1e-99999999999999999999", "0 0", kPass},
      {"4.9e-324", "2.4703282292062328e-324", kPass},
      {"4.9e-324", "2.4703282292062327e-324", kFail},
      {"1.0", "1.00000000000001", kPass},
      {"1.0", "1.00000000000002", kFail},
      {"100", "100.0000000000001", kPass},
      {"100", "100.000000000002", kFail},
      {"0", "-1e-14", kPass},
      {"0", "1.0000000000000002e-14", kFail},
      {"9.99999999999999", "10.00000000000005", kFail},
      {"10.00000000000005", "9.99999999999999", kPass},
  });
}

TEST(OrvDiffFloatComparison, ReadsNumbersByTheGlobalLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
  expectResults({
      {"1.234", "1234", kPass},
      {"1e 5E+", "1 5", kPass},
      {"-1e400 1e400", "-1e401 1e401", kPass},
      {"1e400", "17976931348623157e292", kFail},
  });
  std::locale::global(before);
}

TEST(OrvDiffFloatComparison, ShowsTheFirstMismatch) {
  EXPECT_EQ("3:4 -4.5e1=-45, 4:1 -46=-46, 1 > 1e-13",
            firstMismatch("1 2\n\n 3 -4.5e1; 6", "1\n2\nx3\n-46 5"));
  EXPECT_EQ("1:3 2=2, 2:4 none, 0 > 0", firstMismatch("1 2", "1\nabc"));
  EXPECT_EQ("1:1 1e400=inf, 1:1 1=1, inf > 0", firstMismatch("1e400", "1"));
  EXPECT_EQ("pass", firstMismatch("1 2", "1\n2"));
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

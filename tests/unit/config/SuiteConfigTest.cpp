#include "cli/config/SuiteConfig.h"

#include <string>

#include "cli/config/FindConfig.h"
#include "tests/support/Testing.h"

namespace {

/// A pattern that is right but for what is added or put in place of a line.
std::string pattern(const std::string& line = {}, const std::string& more = {}) {
  std::string text;
  const std::string key = line.substr(0, line.find(' '));
  for (const char* const usual : {"name = 'stamp'", "expression = 'Build [0-9]+'",
                                  "formats = ['html']", "why = 'it varies'"}) {
    const std::string own(usual);
    text += (!key.empty() && own.rfind(key + ' ', 0) == 0 ? line : own) + '\n';
  }
  return "[[pattern]]\n" + text + more +
         "[[pattern.examples]]\nbefore = '<i>Build 4711</i>'\nafter = '<i></i>'\n"
         "[[pattern.examples]]\nstays = 'Builders 12'\n";
}

std::string format(const std::string& more) {
  return "[[format]]\nname = 'invoices'\noutputs = 'Inv'\ntail = '*.inv'\n" + more + '\n';
}

std::string known(const std::string& rest) {
  return "[[known]]\nwhy = 'w'\n" + rest;
}

std::string problemsOf(const std::string& text) {
  std::string all;
  for (const ConfigProblem& problem : readSuiteConfig("/s/orvdiff.toml", "c", text).problems) {
    all += toText(problem) + '\n';
  }
  return all;
}

TEST(SuiteConfig, SaysWhatIsWrongAndWhere) {
  const std::string top = "version = 1\n";
  const struct {
    std::string text;
    std::string problem;  ///< the start of the only one; empty: there is none
  } rows[] = {
      {top, ""},
      {top + "[suite]\nformats = 'html'\njobs = 4\nstrict = ['masks']\nnewer-than = '12h'", ""},
      {top + pattern(), ""},
      {"", "c:1:1: the file needs \"version = 1\" at its top"},
      {"version = 2", "c:1:1: the file is of version 2; this orvdiff reads version 1"},
      {"version = 1\n[suite", "c:2:7: Error while parsing table header"},
      {top + "[suite]\nwrok = 'x'",
       "c:3:1: unknown key \"wrok\" in [suite]; did you mean \"work\"?"},
      {top + "[sweet]", "c:2:2: unknown key \"sweet\" in the file"},
      {top + "[suite]\njobs = 1.5", "c:3:1: \"jobs\" must be a whole number from 1 to 1024"},
      {top + "[suite]\njobs = 0", "c:3:1: \"jobs\" must be a whole number from 1 to 1024"},
      {top + "[suite]\nmask-limit = nan", "c:3:1: \"mask-limit\" must be a number from 0 to 100"},
      {top + "[suite]\nformats = ['html', '']", "c:3:1: \"formats\" must be a text or an array"},
      {top + "pattern = 1", "c:2:1: \"pattern\" must be an array, not a whole number"},
      {top + pattern("why = ''"), "c:6:1: \"why\" must not be empty"},
      {top + pattern("name = 'ScriptElement'"), "c:3:1: the name \"ScriptElement\" is that of a"},
      {top + pattern() + pattern(), "c:13:1: there is another [[pattern]] called \"stamp\""},
      {top + pattern("formats = ['hmtl']"), "c:5:1: unknown format \"hmtl\"; did you mean html?"},
      {top + pattern("formats = []"), "c:5:1: [[pattern]] needs \"formats\""},
      {top + pattern({}, "place = 'behind'\n"), "c:7:1: \"place\" must be \"last\", \"first\""},
      {top + pattern({}, "place = 'before ScriptElement'\n"), ""},
      {top + "[[pattern]]\nname='n'\nexpression='x'\nformats=['html']\nwhy='w'\n"
             "[[pattern.examples]]\nbefore='x'\nafter=''",
       "c:7:11: [[pattern]] needs at least one [[pattern.examples]] with \"before\""},
      {top + pattern() + "[[pattern.examples]]\nstays = 'Build 1'",
       "c:13:1: the example does not hold: \"Build 1\" should stay, but becomes \"\""},
      {top + pattern() + "[[pattern.examples]]\nbefore = 'build 1'\nafter = ''",
       "c:13:1: the example does not hold: \"build 1\" should become \"\", but stays"},
      {top + pattern() + "[[pattern.examples]]\nbefore = 'x'\nafter = 'x'",
       "c:14:1: the example changes nothing"},
      {top + pattern() + "[[pattern.examples]]\nstays = \"a\\u0000Build 1\"",
       "c:13:1: the example does not hold: it contains a NUL character"},
      {top + known("until = 2027-01-31\ngroup = 'a'"), ""},
      {top + known("until = 2027-01-31\npair = 'a'\nverdict = 'missing'"), ""},
      {top + known("until = '2027-01-31'\ngroup = 'a'"), "c:4:1: \"until\" must be a date"},
      {top + known("group = 'a'"), "c:2:1: [[known]] needs \"until\""},
      {top + known("until = 2027-01-31\npair = 'a'"), "c:2:1: [[known]] needs \"group\""},
      {top + known("until = 2027-01-31\nverdict = 'missing'"),
       "c:2:1: [[known]] without \"group\""},
      {top + known("until = 2027-01-31\npair = 'a'\nverdict = 'crashed'"),
       "c:6:1: \"crashed\" cannot be known"},
      {top + format("compare = 'csv'\nignore = 'Printed'\ntolerance = 0.5\n"
                    "columns = { Total = { relative = 0.01 } }"),
       ""},
      {top + format("compare = 'cvs'"),
       "c:6:1: nothing compares by \"cvs\"; did you mean \"csv\"?"},
      {top + format("compare = 'bytes'\nkeys = 'Id'"), "c:7:1: unknown key \"keys\" in [[format]]"},
      {top + format("compare = 'csv'\ntolerance = -1"),
       "c:3:1: [[format]] \"invoices\" has a tolerance that is negative"},
      {top + format("compare = 'csv'\nkeys = 'Id'\nignore = 'Id'"),
       "c:3:1: [[format]] \"invoices\" names column \"Id\" twice"},
      {top + format("compare = 'text'\npatterns = ['ScriptElement', 'Scrpt']"),
       "c:7:1: there is no pattern \"Scrpt\""},
      {top + pattern() + format("compare = 'text'\npatterns = ['ScriptElement', 'stamp']"), ""},
      {top + format("compare = 'xml'\nschema = 'none.xsd'\nnamespace = 'u'"),
       "c:7:1: the schema /s/none.xsd cannot be read"},
      {top + format("compare = 'script'\ncommand = ['./none', '{output}']"),
       "c:7:1: /s/none is not there or not executable"},
      {top + format("compare = 'script'\ncommand = ['cmp', '{master}']"),
       "c:3:1: [[format]] \"invoices\" has no argument with {output}"},
      {top + format("compare = 'bytes'\nmasters = '../up'"),
       "c:3:1: [[format]] \"invoices\" has no plain name of its master"},
      {top + "[[format]]\nname = 'csv'\noutputs = 'x'\ntail = 'y'\ncompare = 'bytes'",
       "c:3:1: there is a format \"csv\" already"},
  };
  for (const auto& row : rows) {
    const std::string problems = problemsOf(row.text);
    EXPECT_EQ(problems.empty(), row.problem.empty()) << row.text << '\n' << problems;
    EXPECT_EQ(problems.substr(0, row.problem.size()), row.problem) << row.text;
    EXPECT_EQ(problems.find('\n') + 1, problems.size()) << row.text << '\n' << problems;
  }
}

TEST(SuiteConfig, TellsWhereIcuRefusesAnExpression) {
  EXPECT_THAT(
      problemsOf("version = 1\n" + pattern("expression = 'a(b'")),
      StartsWith("c:4:1: ICU refuses the expression (U_REGEX_MISMATCHED_PAREN) at character"));
}

TEST(SuiteConfig, ACatastrophicPatternEndsInAnError) {
  OwnPattern bad;
  bad.name = "slow";
  bad.expression = "(a+)+b";
  ASSERT_EQ(compileOwnPattern(bad), "");
  EXPECT_FALSE(bad.pattern->isLinear());
  EXPECT_THAT(exampleProblem(bad, {std::string(60, 'a') + 'c', ""}),
              HasSubstr("the pattern \"slow\" takes too long on this text"));
  OwnPattern longer;
  longer.name = "longer";
  longer.expression = "x";
  longer.replacement = "a long word";
  ASSERT_EQ(compileOwnPattern(longer), "");
  EXPECT_THAT(exampleProblem(longer, {"x", "a long word"}), HasSubstr("makes the text longer"));
}

TEST(SuiteConfig, KnowsPatternsThatMatchNothing) {
  const std::pair<const char*, bool> rows[] = {{"x*", true},  {"(?=b)", true}, {"x+", false},
                                               {"\\b", true}, {"a|", true},    {"ab", false}};
  for (const auto& [expression, matchesNothing] : rows) {
    OwnPattern pattern;
    pattern.expression = expression;
    pattern.examples = {{"ab", ""}};
    ASSERT_EQ(compileOwnPattern(pattern), "") << expression;
    EXPECT_EQ(matchesEmptyText(pattern), matchesNothing) << expression;
  }
}

}  // namespace

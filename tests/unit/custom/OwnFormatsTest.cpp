#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "cli/custom/CsvComparison.h"
#include "cli/custom/FormatList.h"
#include "cli/custom/JsonSettlement.h"
#include "cli/custom/NumbersComparison.h"
#include "cli/custom/OwnEngines.h"
#include "cli/diff/PairDiff.h"
#include "cli/system/CommandError.h"
#include "tests/support/Testing.h"

namespace {

using Texts = std::vector<std::string>;

/// "equal" and the rules that helped, or what else came of it, and the problem.
std::string summary(const ContentOutcome& outcome) {
  const char* const verdicts[] = {"equal", "differs", "bad output", "bad master"};
  std::string text = verdicts[static_cast<int>(outcome.verdict)];
  for (const std::string& rule : outcome.rules) {
    text += "; " + rule;
  }
  return text + (outcome.problem.empty() ? "" : ": " + outcome.problem);
}

OwnFormat ownFormat(const std::string& name, OwnComparison comparison) {
  return {name, "Own", "Own", "*.own", std::move(comparison), {}};
}

TEST(Tolerance, IsExactInDecimal) {
  const struct {
    const char* master;
    const char* output;
    Tolerance tolerance;
    bool isAllowed;
  } rows[] = {
      {"1.0", "1.1", {0.1, 0}, true},  // with doubles, 1.1 - 1.0 is more than 0.1
      {"1.0", "1.1000000000000000001", {0.1, 0}, false},
      {"300", "321", {0, 0.07}, true},
      {"300", "321.0000000000000001", {0, 0.07}, false},
      {"9007199254740993", "9007199254740992", {0.5, 0}, false},  // one double
      {"9007199254740993", "9007199254740992", {1, 0}, true},
      {"-0", "0", {0.1, 0}, true},
      {"-0.05", "+.05", {0.1, 0}, true},
      {"-1", "1", {1.9, 0}, false},
      {"1,234.5", " 1234.6", {0.1, 0}, true},
      {"1,23", "1,24", {9, 0}, false},
      {"1e3", "1000.5", {0.5, 0}, true},
      {"1-3", "1-4", {9, 0}, false},
      {"nan", "nan ", {9, 0}, false},
      {"inf", "1", {1e300, 0}, false},
      {"0x10", "0x11", {9, 0}, false},
      {"", "0", {9, 0}, false},
      {"1e999", "2e999", {9, 9}, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.tolerance.allows(row.master, row.output), row.isAllowed)
        << row.master << " and " << row.output;
  }
}

const CsvRules kInvoices = {',', true, {"Printed"}, {}, {0.01, 0}, {{"Net", {1, 0}}}};
const CsvRules kKeyed = {';', true, {}, {"Id"}, {}, {}};

TEST(OwnCsv, ComparesRecords) {
  const struct {
    const CsvRules& rules;
    const char* master;
    const char* output;
    const char* expected;
  } rows[] = {
      {kInvoices, "Net,Printed\n5,a\n", "Net,Printed\n6,b\n",
       "equal; tolerance in column Net; ignored column Printed"},
      {kInvoices, "Net,Printed\n5,a\n", "Net,Printed\n6.1,b\n", "differs"},
      {kInvoices, "Net,Printed\n5,a,1\n", "Net,Printed\n5,a,1.01\n", "equal; tolerance"},
      {kInvoices, "Net,Printed\n5,a\n", "Net,Printed\n5,a,\n", "differs"},
      {kInvoices, "Net,Printed\n5,a\n", "Net,Printed\n5,a\n5,a\n", "differs"},
      {kInvoices, "Net,Printed\n5,a\n6,b\n", "Net,Printed\n5,a,6,b\n", "differs"},
      {kInvoices, "Net,Printed\n5,a\n", "\xEF\xBB\xBFNet,\"Printed\"\r\n\"5\",a",
       "equal; other quotes, line ends or byte-order mark"},
      {kInvoices, "Net,Printed\n\"5,\n6\",a\n", "Net,Printed\n\"5,\n7\",a\n", "differs"},
      {kInvoices, "Net,Printed\nNaN,a\n", "Net,Printed\nnan,a\n", "differs"},
      {kInvoices, "Net,Printed\n5,a\n", "Net,Stamped\n5,a\n",
       "differs: has no column \"Printed\", which is to be ignored"},
      {kInvoices, "Printed,Net\na,5\n", "Net,Printed\n5,a\n", "differs"},
      {kInvoices, "Net\n5\n", "Net\n5\n",
       "bad master: has no column \"Printed\", which is to be ignored"},
      {kInvoices, "Net,Net,Printed\n", "Net,Net,Printed\n",
       "bad master: has several columns \"Net\", which has a tolerance of its own"},
      {kInvoices, "Net,Printed\n5,a\n", "Net,Printed\n5,\"a\n",
       "bad output: has a quote that is not closed, in line 2"},
      {kKeyed, "Id;V\n1;a\n2;b\n", "Id;V\n2;b\n1;a\n", "equal; rows in another order"},
      {kKeyed, "Id;V\n1;a\n", "Id;V\n1;a\n1;a\n",
       "differs: has two rows with Id \"1\", in lines 2 and 3"},
      {kKeyed, "Id;V\n1;a\n1;b\n", "Id;V\n1;a\n",
       "bad master: has two rows with Id \"1\", in lines 2 and 3"},
      {kKeyed, "Id;V\n1;a\n", "Id;V\n2;a\n", "differs"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(summary(compareCsv(row.master, row.output, row.rules)), row.expected)
        << row.master << "and\n"
        << row.output;
  }
}

using Cells = std::vector<Texts>;

/// What the rules mean, the slow and simple way. The first row has the names A, B and C.
bool isEqual(const Cells& master, const Cells& output, const CsvRules& rules) {
  const auto has = [](const Texts& names, std::size_t column) {
    return column < 3 && std::count(names.begin(), names.end(), Texts{"A", "B", "C"}[column]) > 0;
  };
  const auto areEqual = [&](const Texts& one, const Texts& other) {
    bool equal = one.size() == other.size();
    for (std::size_t i = 0; equal && i < one.size(); ++i) {
      const bool areNumbers = std::isdigit(one[i][0]) != 0 && std::isdigit(other[i][0]) != 0;
      const double apart = std::fabs(std::atof(one[i].c_str()) - std::atof(other[i].c_str()));
      equal = one[i] == other[i] || has(rules.ignored, i) ||
              (areNumbers && !has(rules.keys, i) && apart < rules.tolerance.absolute);
    }
    return equal;
  };
  if (rules.keys.empty()) {
    return std::equal(master.begin(), master.end(), output.begin(), output.end(), areEqual);
  }
  const auto countKey = [](const Cells& rows, const std::string& key) {
    return std::count_if(rows.begin(), rows.end(),
                         [&key](const Texts& row) { return row[0] == key; });
  };
  return master.size() == output.size() &&
         std::all_of(master.begin(), master.end(), [&](const Texts& row) {
           return countKey(master, row[0]) == 1 && countKey(output, row[0]) == 1 &&
                  areEqual(row,
                           *std::find_if(output.begin(), output.end(),
                                         [&](const Texts& other) { return other[0] == row[0]; }));
         });
}

/// Writes cells with quotes and line ends that do not count.
std::string csvText(const std::string& header, const Cells& rows, std::mt19937& random) {
  std::string text = header;
  for (const Texts& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const bool isQuoted = row[i].find(',') != std::string::npos || random() % 4 == 0;
      text += (i > 0 ? "," : "") + (isQuoted ? '"' + row[i] + '"' : row[i]);
    }
    text += random() % 4 == 0 ? "\r\n" : "\n";
  }
  return text;
}

/// How many hunks show how a pair differs, by the rules of the own format "own".
Difference differenceOfOwn(const std::string& master, const std::string& output) {
  const OrvDiffFormat& format = *FormatList::find("own");
  const auto engine = FormatList::createEngine(format, {});
  TestFolder::write("m", master);
  TestFolder::write("o", output);
  PairRecord record;
  record.master = "m";
  record.output = "o";
  record.verdict = Verdict::Differs;
  return differenceOf(format, *engine, record, {0, 0, 0}).value_or(Difference());
}

TEST(OwnCsv, AgreesWithItsMeaningAndItsDifferences) {
  const TestFolder folder;
  std::mt19937 random(16);
  const Texts values = {"1", "1.2", "2", "x", "x,y"};
  const auto any = [&](const Texts& from) { return from[random() % from.size()]; };
  int passes = 0;
  for (int round = 0; round < 4000; ++round) {
    CsvRules rules;
    rules.ignored = random() % 2 == 0 ? Texts{"B"} : Texts{};
    rules.keys = random() % 2 == 0 ? Texts{"A"} : Texts{};
    rules.tolerance.absolute = random() % 2 == 0 ? 0.5 : 0;
    Cells master;
    for (std::size_t row = 0; row < random() % 4; ++row) {
      master.push_back({std::to_string(row), any(values), any(values)});
    }
    Cells output = master;
    for (int change = static_cast<int>(random() % 3); change > 0 && !output.empty(); --change) {
      output[random() % output.size()][random() % 5 == 0 ? 0 : 1 + random() % 2] = any(values);
    }
    if (random() % 4 == 0) {
      std::shuffle(output.begin(), output.end(), random);
    }
    const char* const header =
        random() % 16 == 0 ? (random() % 2 == 0 ? "A,D,C\n" : "") : "A,B,C\n";
    const std::string masterText = csvText("A,B,C\n", master, random);
    const std::string outputText = csvText(header, output, random);
    const auto verdict = compareCsv(masterText, outputText, rules).verdict;
    const bool passed = verdict == ContentOutcome::Verdict::Equal;
    ASSERT_EQ(passed, isEqual(master, output, rules) && header == std::string("A,B,C\n"))
        << masterText << "and\n"
        << outputText;
    passes += passed ? 1 : 0;
    if (!passed && round % 8 == 0) {
      FormatList::setOwn({ownFormat("own", rules)});
      const Difference difference = differenceOfOwn(masterText, outputText);
      EXPECT_GT(difference.hunkCount, 0U) << masterText << "and\n" << outputText;
      for (const DiffHunk& hunk : difference.hunks) {
        EXPECT_TRUE(rules.ignored.empty() || hunk.place.find(", B") == std::string::npos);
      }
      for (const std::string& note : difference.notes) {
        EXPECT_THAT(note, Not(HasSubstr("the same cells")));
      }
    }
  }
  EXPECT_GT(passes, 1000);
}

TEST(OwnJson, ComparesValues) {
  const JsonRules rules = {{"$.at", "$..id", "$.m[\"a b\"]"}, {"$.rows", "$.deep[*]"}, {0.1, 0}};
  const struct {
    const char* master;
    const char* output;
    const char* expected;
  } rows[] = {
      {R"({"at":1,"x":2})", R"({ "x":2, "at":[9] })", "equal; ignored value $.at"},
      {R"({"at":1,"x":2})", R"({"x":2})", "differs"},
      {R"({"r":[{"id":1,"v":"a"}]})", R"({"r":[{"id":7,"v":"a"}]})", "equal; ignored value $..id"},
      {R"({"r":[{"id":1,"v":"a"}]})", R"({"r":[{"id":7,"v":"b"}]})", "differs"},
      {R"({"m":{"a b":1}})", R"({"m":{"a b":2}})", "equal; ignored value $.m[\"a b\"]"},
      {R"({"rows":[1,2,2]})", R"({"rows":[2,1,2]})", "equal; any order of elements $.rows"},
      {R"({"rows":[1,2,2]})", R"({"rows":[2,1,1]})", "differs"},
      {R"({"rows":[1,1.2]})", R"({"rows":[1.1,1.05]})",
       "equal; any order of elements $.rows; tolerance"},
      {R"({"rows":[1,1.3]})", R"({"rows":[1.1,1.05]})", "differs"},
      {R"({"deep":[[1,2],[3,4]]})", R"({"deep":[[2,1],[4,3]]})",
       "equal; any order of elements $.deep[*]"},
      {R"({"deep":[[1,2],[3,4]]})", R"({"deep":[[3,4],[1,2]]})", "differs"},
      {R"({"x":[1,2]})", R"({"x":[2,1]})", "differs"},
      {R"({"x":"1.0"})", R"({"x":"1.05"})", "differs"},
      {R"({"x":1})", R"({"x":"1"})", "differs"},
      {R"({"x":-0})", R"({"x":0.0})", "equal; tolerance"},
      {R"({"x":12345678901234567890})", R"({"x":12345678901234567891})", "differs"},
      {R"({"x":"\u0041","y":1})", R"({"y":1,"x":"A"})",
       "equal; other spacing, order of members or spelling of strings"},
      {R"({"x":1,"x":2})", R"({"x":2})",
       "bad master: has an object with two members named \"x\", in line 1"},
      {R"({"x":1})", R"({"x":NaN})", "bad output: cannot be read as JSON"},
      {"1", "1 2", "bad output: cannot be read as JSON"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(summary(compareJson(row.master, row.output, rules)), StartsWith(row.expected))
        << row.master << " and " << row.output;
  }
  const std::string deep = std::string(3000, '[') + std::string(3000, ']');
  EXPECT_THAT(summary(compareJson(deep, deep + " ", rules)), StartsWith("bad master: is nested"));
}

TEST(OwnJson, ShowsOnlyWhatTheRulesDoNotAllow) {
  const TestFolder folder;
  FormatList::setOwn({ownFormat("own", JsonRules{{"$.at"}, {"$.rows"}, {0.1, 0}})});
  const Difference difference =
      differenceOfOwn(R"({"at":1,"n":1.0,"rows":[1,2,"a"],"list":[5,6]})",
                      R"({"at":2,"n":1.05,"rows":["b",2.05,1],"list":[5.01,7]})");
  Texts places;
  for (const DiffHunk& hunk : difference.hunks) {
    places.push_back(hunk.place);
  }
  EXPECT_THAT(places, ElementsAre("$.rows[0], only in the output", "$.rows[2], only in the master",
                                  "$.list[1]"));
}

TEST(OwnNumbers, ComparesWordsAndNumbers) {
  const struct {
    const char* master;
    const char* output;
    const char* expected;
  } rows[] = {
      {"Net: 12.50, of 3\n", "Net: 12.55, of 3\n", "equal; tolerance"},
      {"Net: 12.50\r\n", "Net: 12.50", "equal; other line ends"},
      {"Net: 12.50\n", "Net: 12.61\n", "differs"},
      {"Net: 1\n", "Sum: 1\n", "differs"},
      {"1\n2\n", "1\n", "differs"},
      {"2024-01-05", "2024-01-05.05", "differs"},
      {"10:30.1", "10:30.2", "differs"},
      {"AB-17.1", "AB-17.2", "differs"},
      {"v1.1", "v1.2", "differs"},
      {"1,234.5", "1,234.6", "equal; tolerance"},
      {"(-0.5)", "(-0.6)", "equal; tolerance"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(summary(compareNumbers(row.master, row.output, {0.1, 0})), row.expected)
        << row.master << " and " << row.output;
  }
  const TestFolder folder;
  FormatList::setOwn({ownFormat("own", NumbersRules{{0.1, 0}})});
  const std::string output = "new\nNet 1.05\nTax 3\n";
  EXPECT_EQ(differenceOfOwn("Net 1.0\nTax 2\n", output).hunkCount, 2U);
  EXPECT_EQ(differenceOfOwn("Net 1.0\nTax 2\n", output).changes.size(), 2U);
}

/// The message of the error that `action` raises.
template <typename Action>
std::string errorOf(const Action& action) {
  try {
    action();
  } catch (const CommandError& error) {
    return error.what();
  }
  return "no error";
}

TEST(OwnFormats, AreCheckedBeforeUse) {
  const auto tail = [](std::string text) {
    OwnFormat format = ownFormat("a", BytesRules());
    format.masterTail = std::move(text);
    return format;
  };
  CsvRules both = kInvoices;
  both.keys = {"Printed"};
  const std::pair<OwnFormat, const char*> rows[] = {
      {ownFormat("csv", BytesRules()), "is the name of a documented format"},
      {ownFormat("A b", BytesRules()), "must be of lower-case letters"},
      {tail(""), "does not say how the names of its masters end"},
      {ownFormat("a", both), "names column \"Printed\" twice"},
      {ownFormat("a", JsonRules{{"rows"}, {}, {}}), "has \"rows\", which is no path"},
      {ownFormat("a", JsonRules{{"$"}, {}, {}}), "ignores all of the file"},
      {ownFormat("a", JsonRules{{}, {}, {-1, 0}}), "has a tolerance that is negative"},
      {ownFormat("a", PictureRules{100, 0}), "has a share of pixels"},
      {ownFormat("a", ScriptRules{{"cmp", "{master}"}}), "has no argument with {output}"},
  };
  for (const auto& [format, problem] : rows) {
    EXPECT_THAT(errorOf([&format = format] { FormatList::setOwn({format}); }),
                HasSubstr("format \"" + format.name + "\" " + problem));
  }
  EXPECT_THAT(errorOf([&] {
                FormatList::setOwn({tail("*"), tail("*")});
              }),
              HasSubstr("is defined twice"));
}

/// What comes of comparing two empty files by a script.
std::string runScript(const Texts& command, double seconds = 60) {
  const OwnFormat format = ownFormat("own", ScriptRules{command, seconds});
  const auto engine = createOwnEngine(format, nullptr);
  const std::string obstacle = obstacleOf(*engine);
  if (!obstacle.empty()) {
    return obstacle;
  }
  return errorOf([&] {
    const std::unique_ptr<OrvDiffResult> result(engine->performDiff("-a $(b)", "o", nullptr));
    throw CommandError(result->isPassed() ? "passed" : "differs");
  });
}

TEST(OwnScript, DecidesByItsExitStatusOnly) {
  const TestFolder folder;
  TestFolder::write("-a $(b)", "same");
  TestFolder::write("o", "same");
  TestFolder::write("plain", "");
  EXPECT_EQ(runScript({"cmp", "{master}", "{output}"}), "passed");
  EXPECT_EQ(runScript({"test", "{master}{output}", "=", "./-a $(b)o"}), "passed");
  EXPECT_EQ(runScript({"false", "{master}", "{output}"}), "differs");
  EXPECT_THAT(runScript({"sh", "-c", "exit 3", "{master}", "{output}"}),
              HasSubstr("ended with status 3"));
  EXPECT_THAT(runScript({"sh", "-c", "kill -9 $$", "{master}", "{output}"}),
              HasSubstr("killed by a signal"));
  EXPECT_THAT(runScript({"sh", "-c", "sleep 60; :", "{master}", "{output}"}, 0.1),
              HasSubstr("did not end within 0.1 seconds and was killed"));
  EXPECT_THAT(runScript({"./plain", "{master}", "{output}"}), HasSubstr("is not executable"));
  EXPECT_THAT(runScript({"no-such-program", "{master}", "{output}"}), HasSubstr("not in PATH"));
}

}  // namespace

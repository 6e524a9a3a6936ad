#include "cli/probe/PlantedChanges.h"
#include "cli/probe/ProposalCheck.h"
#include "cli/probe/Proposals.h"
#include "orvdiff/compare/pattern/PatternCompiler.h"
#include "tests/support/Testing.h"

namespace {

/// Runs of one or more files, probed without patterns of a format.
class Probe {
 public:
  explicit Probe(const std::vector<std::vector<std::string>>& runs) : files(written(runs)) {}

  static RunFolders written(const std::vector<std::vector<std::string>>& runs) {
    std::vector<std::string> folders;
    for (const std::vector<std::string>& run : runs) {
      folders.push_back("run" + std::to_string(folders.size()));
      for (std::size_t file = 0; file < run.size(); ++file) {
        TestFolder::write(folders.back() + "/f" + std::to_string(file) + ".txt", run[file]);
      }
    }
    return findRunFiles(folders, ".txt");
  }

  /// "kind: expression" of each proposal.
  std::vector<std::string> patterns() const {
    std::vector<std::string> shown;
    for (const Proposal& proposal : proposals.patterns) {
      shown.push_back(std::string(nameOf(proposal.kind)) + ": " + proposal.expression);
    }
    return shown;
  }

  TestFolder folder;
  OrvPatternList none;
  RunFolders files;
  RunTexts texts{files, none};
  Variations variations = findVariations(texts);
  Proposals proposals = propose(variations, texts);
  ProposalCheck check = checkProposals(proposals, variations.places, texts);
};

using Texts = std::vector<std::string>;

struct Row {
  Texts first, second;
  std::vector<std::string> patterns;
};

/// The same text, with a number of its own, in several files.
Texts pages(const std::string& text) {
  return {"<p>Page 1</p>" + text, "<p>Page 2</p>" + text, "<p>Page 3</p>" + text};
}

TEST(Probe, ProposesPatternsThatExplainWhatVaries) {
  const std::string uuidTail = "-4f89-11d3-9a0c-0305e82c3301";
  const Row rows[] = {
      {{"Printed 2026-11-23 11:45:25."},
       {"Printed 2026-11-23 11:46:07."},  // tomorrow the date will differ, too
       {R"(date and time: Printed [0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+)"}},
      {{"Generated on Mon Nov 2 2026 08:14:55 for x"},
       {"Generated on Sun Jan 17 2027 21:03:09 for x"},
       {"date and time: Generated on [A-Z][a-z]+ [A-Z][a-z]+ [0-9]+ [0-9]+ [0-9]+:[0-9]+:[0-9]+"}},
      {{"on Mon Nov  2 08:14:55 2026 here"},
       {"on Mon Nov 12 08:14:56 2026 here"},
       {"date and time: on [A-Z][a-z]+ [A-Z][a-z]+ +[0-9]+ [0-9]+:[0-9]+:[0-9]+ [0-9]+ here"}},
      {{"Stand: 23.11.2026"}, {"Stand: 24.11.2026"}, {R"(date: Stand: [0-9]+\.[0-9]+\.[0-9]+)"}},
      {{"<p>Updated at 9:05 AM</p>"},
       {"<p>Updated at 11:10 PM</p>"},
       {"time: Updated at [0-9]+:[0-9]+ [A-Z]+"}},
      {{"&copy;2026, us"}, {"&copy;2027, us"}, {"year: &copy;[0-9]+"}},
      {{"Rendered in 0.53 s"}, {"Rendered in 1 s"}, {"duration: Rendered in [0-9.]+ ?[a-z]+"}},
      {{"key=3f2504e0" + uuidTail},
       {"key=9b2504e0" + uuidTail},
       {"UUID: key=[0-9a-f]+-[0-9a-f]+-[0-9a-f]+-[0-9a-f]+-[0-9a-f]+"}},
      {{"object at 0x7ff35ab32110;"},
       {"object at 0x7fa6802b9ee0;"},
       {"hexadecimal id: object at 0x[0-9a-f]+"}},
      {{"<a href=\"x.js?v=9fceb02d\">"},
       {"<a href=\"x.js?v=12345678\">"},
       {R"(hexadecimal id: js\?v=[0-9a-f]+)"}},
      {{"<a href=\"v?s=9fceb02d&t=17\">"},
       {"<a href=\"v?s=12345678&t=18\">"},
       {R"(identifier: href="v\?s=[0-9a-f]+&t=[0-9]+)"}},
      {{"<b>http://srv01.corp.example:8080/x</b>"},
       {"<b>http://srv02.corp.example:81/x</b>"},
       {R"(host name: http://srv[0-9]+\.corp\.example:[0-9]+)"}},
      {{"Library 3.11.2 documentation"},
       {"Library 3.11.10-rc1 documentation"},
       {R"(version: Library v?[0-9]+(\.[0-9A-Za-z]+|-[0-9A-Za-z]+|\+[0-9A-Za-z]+|~[0-9A-Za-z]+)*)"}},
      {{"<i>Build '4711'</i>"}, {"<i>Build '4720'</i>"}, {"counter: Build '[0-9]+"}},
      {pages("<i>Total 17</i>"), pages("<i>Total 18</i>"), {"counter: Total [0-9]+"}},
      {pages("by alice"), pages("by bob"), {"words: by [a-z]+"}},
      {{"<a class=\"x\" href=\"y\" title=\"z\">t</a>"},
       {"<a href=\"y\" class=\"x\" title=\"z\">t</a>"},
       {R"(order of attributes: href="y" class="x")"}},
      {{"<a  class=\"x\">t</a>"}, {"<a class=\"x\">t</a>"}, {R"(white space: [ 	\n]+)"}},
      {{"<p>a</p> <p>b</p>"}, {"<p>a</p>\n\n<p>b</p>"}, {R"(white space: >[ 	\n]+<)"}},
      {{"a b  \nc"}, {"a b\nc"}, {R"(white space: [ 	]+\n)"}},
      {{"Zeit \xFC 2026-11-23</p>"},
       {"Zeit \xFC 2026-11-24</p>"},
       {"date:  [0-9]+-[0-9]+-[0-9]+</p>"}},
      // Two labels are needed where one stands at other numbers as well.
      {{"Version 12 of the report, version 3 of the form, Version 4 of us"},
       {"Version 13 of the report, version 3 of the form, Version 4 of us"},
       {"counter: Version [0-9]+ of the report"}},
      // The rows of a table have one pattern, although each has a label of its own.
      {{"<td>One</td><td>10:00:01</td><td>Two</td><td>10:00:02</td><td>Three</td><td>10:00:03</td>"
        "<td>Four</td><td>10:00:04</td>"},
       {"<td>One</td><td>11:00:01</td><td>Two</td><td>11:00:02</td><td>Three</td><td>11:00:03</td>"
        "<td>Four</td><td>11:00:04</td>"},
       {"time: <td>[0-9]+:[0-9]+:[0-9]+</td>"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.second.front());
    const Probe probe({row.first, row.second});
    EXPECT_EQ(probe.patterns(), row.patterns);
    EXPECT_EQ(probe.check.unexplainedPlaces, 0U);
    EXPECT_EQ(probe.check.missed.size(), 0U);
    for (const Proposal& proposal : probe.proposals.patterns) {
      const auto program = orvdiff::pattern::compilePattern(proposal.expression);
      ASSERT_NE(program, nullptr) << "not linear";
      EXPECT_LE(proposal.replacement.size(), program->minimumLength());
      for (const auto& [before, after] : proposal.examples) {
        EXPECT_NE(before, after);
      }
    }
  }
}

TEST(Probe, LeavesWhatMayBeDataAndSaysWhy) {
  const struct {
    Texts first, second;
    std::string reason, expression;
  } rows[] = {
      {{"<td>Units</td><td>15</td>"},
       {"<td>Units</td><td>16</td>"},
       "may be data",
       "Units</td><td>[0-9]+"},
      {{"Mean: 15 min, x"}, {"Mean: 16 min, x"}, "may be data", "Mean: [0-9]+ min"},
      {pages("<b>Sum 1.5</b>"),
       {"<p>Page 1</p><b>Sum 1.6</b>", "<p>Page 2</p><b>Sum 1.7</b>",
        "<p>Page 3</p><b>Sum 1.5</b>"},
       "may be data",
       R"(Sum [0-9]+\.[0-9]+)"},
      {{"<img width=\"200\">"}, {"<img width=\"210\">"}, "may be data", "width=\"[0-9]+"},
      {{"<p>user profit</p>"}, {"<p>user loss</p>"}, "may be data", "user [a-z]+"},
      {{"<p>profit</p>"}, {"<p>loss</p>"}, "no stable text near", ""},
      {{"<p>one</p><p>two</p>"}, {"<p>one</p><p>x</p><p>two</p>"}, "added, removed", ""},
      {{"Build 7; Build 8; Build 9; Build 10"},
       {"Build 6; Build 8; Build 9; Build 10"},
       "also match 1 other place",
       "Build [0-9]+; Build"},
      {{"&copy;=v1.2.3v1.2.30.5 s"}, {"&copy;=v1.2.30.5 s"}, "matches the value and no more", ""},
      {{"<p>a, b</p>"}, {"<p>a,b</p>"}, "blanks where the other run has none", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.second.front());
    const Probe probe({row.first, row.second});
    EXPECT_THAT(probe.patterns(), ElementsAre());
    ASSERT_FALSE(probe.check.unexplained.empty());
    EXPECT_THAT(probe.check.unexplained.front().declined.reason, HasSubstr(row.reason));
    EXPECT_EQ(probe.check.unexplained.front().declined.expression, row.expression);
  }
}

TEST(Probe, ComparesAllRunsAndLeadsBackToTheFile) {
  const Probe probe({{"Build 7\n15"}, {"Build 7\n15"}, {"Build 8\n16"}});
  EXPECT_THAT(probe.patterns(), ElementsAre("counter: Build [0-9]+"));
  ASSERT_EQ(probe.check.unexplained.size(), 1U);
  EXPECT_EQ(probe.check.unexplained[0].where, "f0.txt:2:1");
  EXPECT_EQ(probe.check.unexplained[0].run, 2U);
}

TEST(Probe, NoticesThatAPatternHidesAPlantedChange) {
  const Texts text = {"<p title=\"Total 9\">Total 15 of 27 &#160; parts, 5 more; Build 17</p>"};
  Probe probe({text, {"<p title=\"Total 9\">Total 15 of 27 &#160; parts, 5 more; Build 18</p>"}});
  EXPECT_GT(probe.check.planted, 10U);
  EXPECT_EQ(probe.check.missed.size(), 0U);
  const OrvDiffNormalizationPattern wide("[0-9]+", "");
  ProposalCheck check;
  plantChanges({&wide}, probe.variations.places, probe.texts, check);
  EXPECT_EQ(check.missed.size(), 5U);  // 15, 27 and 5: nothing in tags, entities, or what varies
}

}  // namespace

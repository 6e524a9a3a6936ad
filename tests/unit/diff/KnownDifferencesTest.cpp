#include "cli/diff/KnownDifferences.h"

#include <string>
#include <vector>

#include "tests/support/Testing.h"

namespace {

const std::string kToday = "2027-01-31";

PairRecord pairWith(Verdict verdict, const std::vector<std::string>& groups) {
  PairRecord pair;
  pair.master = "/s/sales/Masters/R.html";
  pair.verdict = verdict;
  Difference& difference = pair.difference.emplace();
  difference.kind = "text";
  for (const std::string& group : groups) {
    difference.changes.push_back({group, "a", "b", 1});
  }
  return pair;
}

KnownDifference known(std::vector<std::string> groups, std::string until = kToday) {
  return {"sales/Masters/R.html", std::move(groups), {}, "why", std::move(until), {}, {"c", 7, 1}};
}

TEST(KnownDifferences, CoverOnlyPairsWhoseEveryChangeIsKnown) {
  const KnownDifference any = {"sales/**/*.html", {}, "differs", "why", kToday, {}, {}};
  const KnownDifference elsewhere = {"sales/*.html", {}, "differs", "why", kToday, {}, {}};
  const struct {
    std::vector<KnownDifference> list;
    PairRecord pair;
    bool isKnown;
  } rows[] = {
      {{known({"g"})}, pairWith(Verdict::Differs, {"g"}), true},
      {{known({"g"})}, pairWith(Verdict::Differs, {"g", "h"}), false},
      {{known({"g"}), known({"h"})}, pairWith(Verdict::Differs, {"g", "h"}), true},
      {{known({"g"})}, pairWith(Verdict::Differs, {}), false},
      {{known({"g"}, "2027-01-30")}, pairWith(Verdict::Differs, {"g"}), false},
      {{known({"g"}), known({"h"}, "2027-01-30")}, pairWith(Verdict::Differs, {"g", "h"}), false},
      {{known({"g"})}, pairWith(Verdict::Missing, {"g"}), true},
      {{any}, pairWith(Verdict::Differs, {"g", "h"}), true},
      {{any}, pairWith(Verdict::Missing, {"g"}), false},
      {{elsewhere}, pairWith(Verdict::Differs, {"g"}), false},
      {{known({"g"})}, pairWith(Verdict::Error, {"g"}), false},
      {{known({"g"})}, pairWith(Verdict::Partly, {"g"}), false},
      {{known({"g"})}, pairWith(Verdict::Crashed, {"g"}), false},
      {{known({"g"})}, pairWith(Verdict::Passed, {}), false},
  };
  for (const auto& row : rows) {
    KnownDifferences list(row.list, "/s", kToday);
    PairRecord pair = row.pair;
    list.judge(pair);
    const std::ptrdiff_t number = &row - rows;
    EXPECT_EQ(pair.verdict, row.isKnown ? Verdict::Known : row.pair.verdict) << number;
    EXPECT_EQ(pair.known.has_value(), row.isKnown) << number;
  }
}

TEST(KnownDifferences, DoNotCoverWhatIsInNoGroup) {
  KnownDifferences list({known({"g"})}, "/s", kToday);
  PairRecord coarse = pairWith(Verdict::Differs, {"g"});
  coarse.difference->isCoarse = true;
  PairRecord moved = pairWith(Verdict::Differs, {"g"});
  moved.difference->kind = "csv";
  moved.difference->notes = {"columns are in another order"};
  PairRecord many = pairWith(Verdict::Differs, std::vector<std::string>(1000, "g"));
  for (PairRecord* const pair : {&coarse, &moved, &many}) {
    list.judge(*pair);
    EXPECT_EQ(pair->verdict, Verdict::Differs);
  }
}

TEST(KnownDifferences, SayWhatHasEndedOrIsNotNeeded) {
  const KnownDifference anywhere = {"", {"g"}, {}, "why", kToday, {}, {"c", 9, 1}};
  const KnownDifference nowhere = {"hr/*.html", {"g"}, {}, "why", kToday, {}, {"c", 9, 1}};
  const struct {
    KnownDifference known;
    PairRecord pair;
    bool isWholeRun;
    const char* remark;  ///< the start
  } rows[] = {
      {known({"g"}), pairWith(Verdict::Passed, {}), false, "no longer needed: c:7:1: sales"},
      {known({"g"}), pairWith(Verdict::Differs, {"g"}), true, ""},
      {known({"g"}), pairWith(Verdict::Differs, {"h"}), true, ""},
      {known({"g"}, "2027-01-30"), pairWith(Verdict::Differs, {"g"}), true,
       "known only until 2027-01-30, so 1 pair fails again: c:7:1"},
      {anywhere, pairWith(Verdict::Passed, {}), true, "no longer needed: c:9:1: group g"},
      {anywhere, pairWith(Verdict::Passed, {}), false, ""},
      {nowhere, pairWith(Verdict::Passed, {}), true, "there is no such pair: c:9:1"},
      {nowhere, pairWith(Verdict::Passed, {}), false, ""},
  };
  for (const auto& row : rows) {
    KnownDifferences list({row.known}, "/s", kToday);
    PairRecord pair = row.pair;
    list.judge(pair);
    const std::vector<std::string> remarks = list.remarks(row.isWholeRun);
    const std::string said = remarks.empty() ? "" : remarks.front();
    EXPECT_EQ(said.empty(), std::string(row.remark).empty()) << said;
    EXPECT_THAT(said, testing::StartsWith(row.remark));
  }
}

TEST(KnownDifferences, WildcardsStayWithinFoldersUnlessTheySayOtherwise) {
  const struct {
    const char* wildcards;
    const char* path;
    bool matches;
  } rows[] = {
      {"a/b.html", "a/b.html", true},
      {"a/*.html", "a/b.html", true},
      {"*.html", "a/b.html", false},
      {"**/*.html", "a/b.html", true},
      {"**/*.html", "b.html", true},
      {"a/**/c", "a/c", true},
      {"a/**/c", "a/x/y/c", true},
      {"a/**/c", "a/xc", false},
      {"**/c", "xc", false},
      {"a?c", "abc", true},
      {"a?c", "a/c", false},
      {"*", "", true},
      {"a*", "a", true},
      {"a", "ab", false},
      {"*a*a*a*a*a*a*a*a*b", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(matchesWildcards(row.wildcards, row.path), row.matches)
        << row.wildcards << ' ' << row.path;
  }
}

}  // namespace

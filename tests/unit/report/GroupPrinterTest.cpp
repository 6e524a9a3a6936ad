#include "cli/report/GroupPrinter.h"

#include <string>

#include "tests/support/Testing.h"

namespace {

PairRecord pairWith(const std::string& name, const std::vector<std::string>& changes) {
  PairRecord pair;
  pair.master = pair.output = name;
  pair.verdict = Verdict::Differs;
  Difference& difference = pair.difference.emplace();
  difference.kind = "text";
  for (const std::string& change : changes) {
    difference.changes.push_back({change, "from " + change, "to " + change, 1});
    DiffHunk& hunk = difference.hunks.emplace_back();
    hunk.groups = {change};
    hunk.place = "place of " + change;
  }
  difference.hunkCount = changes.size();
  return pair;
}

TEST(GroupPrinter, WhatFindsNoRoomComesOutAtOnceAndIsCounted) {
  const Palette palette(ColorChoice::Never);
  GroupPrinter printer(true, Verbosity::Normal, palette, {}, 1);
  testing::internal::CaptureStdout();
  printer.add(pairWith("a", {"x"}));
  printer.add(pairWith("b", {"x", "y"}));  // y is new, and the room is taken
  printer.add(pairWith("c", {"x"}));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "differs  b\n          place of x\n          place of y\n");
  testing::internal::CaptureStdout();
  printer.finish();
  const std::string rest = testing::internal::GetCapturedStdout();
  EXPECT_THAT(rest, HasSubstr("2 pairs, same change: `from x`"));
  EXPECT_THAT(rest, HasSubstr("1 pair printed in the order of the run"));
}

TEST(GroupPrinter, APairWithMoreChangesThanAreListedIsPrintedItself) {
  std::vector<std::string> changes;
  for (std::size_t i = 0; i < Difference::kMostChanges; ++i) {
    changes.push_back(std::to_string(i));
  }
  const Palette palette(ColorChoice::Never);
  GroupPrinter printer(true, Verbosity::Normal, palette);
  testing::internal::CaptureStdout();
  printer.add(pairWith("a", changes));
  printer.add(pairWith("b", changes));
  printer.finish();
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::AllOf(HasSubstr("differs  a\n"), HasSubstr("differs  b\n")));
}

TEST(GroupPrinter, TheExampleIsThePairThatCanShowTheChange) {
  const Palette palette(ColorChoice::Never);
  GroupPrinter printer(true, Verbosity::Normal, palette);
  PairRecord first = pairWith("a", {"x"});
  first.difference->hunks.clear();  // as when other hunks took all the room
  testing::internal::CaptureStdout();
  printer.add(first);
  printer.add(pairWith("b", {"x"}));
  printer.finish();
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              HasSubstr("for example b\n          place of x\n          also a\n"));
}

}  // namespace

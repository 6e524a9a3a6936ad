#include <future>

#include "HarnessTest.h"

namespace {

using ScriptTest = HarnessTest;

TEST_F(ScriptTest, AnUnopenedScriptStillEndsWithItsReport) {
  harness().setLogLevel(MOXLogLevel::Minimal);
  harness().openLogFile("log", false);
  EXPECT_EQ(harness().endScript(false), 0);
  EXPECT_EQ(TestFolder::read("log").substr(0, 74),
            ">> Script Error: endScript() called outside test script\r\n= Test Finished: ");
  EXPECT_EQ(harness().getLogLevel(), MOXLogLevel::None) << "a fresh harness";
}

TEST_F(ScriptTest, ReleasesOfTheOutputThatNobodyHoldsAreIgnored) {
  for (const bool hold : {false, true, true, false, false, false}) {
    harness().lockOutput(hold);
  }
  std::async(std::launch::async, [] {
    harness().lockOutput(true), harness().lockOutput(false);
  }).get();
  harness().lockOutput(true);
  harness().endScript(false);  // with the output still held
}

TEST_F(ScriptTest, OwnTimeIsTakenOffButNeverBelowZero) {
  startTest(MOXLogLevel::Normal);
  const std::clock_t before = std::clock();
  harness().startTimer();
  while (std::clock() < before + CLOCKS_PER_SEC / 20) {
  }
  harness().stopTimer();
  const std::uint64_t all = harness().getTimer(false, true);
  EXPECT_GE(all, 48U);
  harness().addOwnTime(7, 0);
  EXPECT_EQ(harness().getTimer(false, false), all - 7);
  harness().addOwnTime(1'000'000, 1'000'000);
  EXPECT_EQ(harness().getTimer(false, false), 0U);
  EXPECT_EQ(harness().getTimer(true, false), 0U);
  EXPECT_EQ(harness().getTimer(false, true), all) << "can be read again";
}

TEST_F(ScriptTest, MemoryIsTheGainBetweenStartAndStop) {
  constexpr std::size_t kGain = std::size_t{16} << 20U;
  startTest(MOXLogLevel::Normal);
  std::vector<char> kept;
  harness().startMemory();
  kept.assign(kGain, 'x');
  harness().stopMemory();
  EXPECT_GE(harness().getMemory(), kGain * 9 / 10);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LT(harness().getMemory(), kGain + 100'000);  // by the allocator's count
  harness().startMemory();
  std::vector<char>().swap(kept);
  harness().stopMemory();
  EXPECT_EQ(harness().getMemory(), 0U);
#endif
}

TEST_F(ScriptTest, WhatWentWrongIsInTheFileAtOnce) {
  const std::pair<void (*)(), const char*> kRows[] = {
      {[] { harness().checkMemory("it", "a", "b", 1); }, "A total of 1 bytes unequal\n"},
      {[] { harness().check_file_warn("it", "missing", "missing"); }, "open actual file\n\n"},
      {[] { harness().logMessage("a failure\n", MOXLogLevel::Minimal); }, "a failure\n"},
      {[] { harness().stopTimer(); }, "stopTimer() called while timer not running\r\n"},
      {[] { harness().startTest("next", "text"); }, "- Start Test: next\ntext\n"},
      {[] { harness().endTest(); }, "\n------------------------- End Test: next\n\n"},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& [action, end] : kRows) {
    harness().checkMemory("before", "a", "a", 1);
    action();
    EXPECT_THAT(TestFolder::read("log"), EndsWith(end));  // unflushed, as after a crash
  }
}

TEST_F(ScriptTest, RowsCountCharactersAndNeverCutOne) {
  const std::string umlauts = "\u00e4\u00f6\u00fc\u00e4\u00f6\u00fc\u00e4\u00f6\u00fc\u00e4";
  const std::pair<std::string, std::string> kRows[] = {
      {"", std::string(30, ' ')},
      {std::string(31, 'n'), std::string(30, 'n')},
      {umlauts + umlauts + umlauts + "X", umlauts + umlauts + umlauts},
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80" + std::string(29, ' ')},
      {"cut\xE2\x82", "cut\xE2\x82" + std::string(26, ' ')},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& [name, cell] : kRows) {
    harness().startTest(name.c_str(), nullptr);
  }
  harness().getCurrentTest()->setChecksPassed(12345678);
  harness().endScript(false);
  for (const auto& [name, cell] : kRows) {
    const std::string passed = name[0] == 'c' ? "   12345678" : "       0";
    EXPECT_THAT(TestFolder::read("log"), HasSubstr("\n= " + cell + "        0       0" + passed +
                                                   "       0         PASS =\n"));
  }
}

}  // namespace

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
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

TEST_F(ScriptTest, ACrashLosesNothingOfWhatCameBefore) {
  const std::pair<void (*)(), const char*> kLastDeeds[] = {
      {[] { harness().checkMemory("it", "a", "b", 1); }, "A total of 1 bytes unequal\n"},
      {[] { harness().check_file_warn("it", "missing", "missing"); }, "open actual file\n\n"},
      {[] { harness().logMessage("a failure\n", MOXLogLevel::Minimal); }, "a failure\n"},
      {[] { harness().stopTimer(); }, "stopTimer() called while timer not running\r\n"},
      {[] { harness().startTest("next", "text"); }, "- Start Test: next\ntext\n"},
      {[] { harness().endTest(); }, "\n------------------------- End Test: test\n\n"},
  };
  for (const auto& [deed, end] : kLastDeeds) {
    const pid_t child = fork();
    if (child == 0) {
      startTest(MOXLogLevel::Normal);
      harness().checkMemory("before", "a", "a", 1);
      deed();
      std::_Exit(0);  // flushes nothing, like a crash
    }
    waitpid(child, nullptr, 0);
    EXPECT_THAT(TestFolder::read("log"), testing::StartsWith("PASSED: Check Memory: before\n"));
    EXPECT_THAT(TestFolder::read("log"), testing::EndsWith(end));
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
  const std::string report = TestFolder::read("log");
  for (const auto& row : kRows) {
    const bool isLast = &row == std::end(kRows) - 1;
    EXPECT_THAT(report, testing::HasSubstr("\n= " + row.second + "        0       0 " +
                                           (isLast ? "  12345678" : "      0") +
                                           "       0         PASS =\n"));
  }
}

}  // namespace

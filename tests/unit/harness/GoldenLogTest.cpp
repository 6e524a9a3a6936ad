#include <sys/wait.h>

#include <array>
#include <functional>
#include <regex>

#include "HarnessTest.h"

namespace {

/// With what differs from run to run replaced; by as many characters where the log has columns.
std::string masked(std::string log) {
  const std::regex date("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}");
  log = std::regex_replace(log, date, "Www Mmm dd hh:mm:ss yyyy");
  return std::regex_replace(log, std::regex("Get (Timer|Memory): \\d+"), "Get $1: N");
}

/// Set ORVDIFF_UPDATE_GOLDEN to accept what the tests get; review the change before committing it.
void expectGolden(const std::string& log, const std::string& name) {
  const std::filesystem::path golden = std::filesystem::path(ORVDIFF_HARNESS_GOLDEN_DIR) / name;
  if (std::getenv("ORVDIFF_UPDATE_GOLDEN") != nullptr) {
    TestFolder::write(golden, masked(log));
  }
  EXPECT_EQ(masked(log), TestFolder::read(golden)) << "differs from " << golden;
}

void checkFiles(MOXTestHarness& harness) {
  TestFolder::write("master", "The quick brown fox jumps over the lazy dog.\n");
  TestFolder::write("equal", TestFolder::read("master"));
  TestFolder::write("changed", "The quick brown cat jumps over the lazy dog!\n");
  TestFolder::write("short", "The quick brown fox");
  harness.startTest("Files", "Every verdict of a file check, 100 % of them.");
  harness.check_file("equal", "equal", "master");
  harness.check_file("changed", "changed", "master");
  harness.check_file_warn("actual is shorter", "short", "master");
  harness.check_file("expected is shorter", "master", "short");
  harness.check_file("missing", "missing", "master");
  harness.check_file(nullptr, nullptr, nullptr);
  harness.endTest();
}

void checkMemory(MOXTestHarness& harness) {
  std::array<unsigned char, 224> actual{};
  std::array<unsigned char, 224> expected{};
  for (std::size_t row = 0; row < 12; ++row) {
    actual[17 * row] = 0xFF;
  }
  harness.startTest("Blocks of memory, gr\u00fc\u00dfend verglichen", nullptr);
  harness.checkMemory("equal", expected.data(), expected.data(), 224);
  harness.checkMemory("twelve rows", actual.data(), expected.data(), 224);
  harness.checkMemoryWarn("no actual", nullptr, "more than one\x7Frow", 18);
  harness.checkMemory("no expected", "less", nullptr, 4);
  harness.getCurrentTest()->setChecksPassed(1234567);
}

using H = MOXTestHarness;

void callAll(H& harness, const std::vector<std::function<void(H&)>>& calls) {
  std::for_each(calls.begin(), calls.end(), [&](const auto& call) { call(harness); });
}

void readTimer(H& harness) {
  harness.getTimer(true, true);
}

void measure(H& harness) {
  harness.startTest("Measurements", "");  // the test case before is still open
  callAll(harness, {&H::startTimer, &H::stopTimer, readTimer});
  harness.getTimer(false, false);
  callAll(harness, {&H::resetTimer, &H::startMemory, &H::stopMemory, &H::getMemory, &H::endTest});
}

void callInTheWrongOrder(H& harness) {
  harness.startTest(nullptr, nullptr);
  harness.startScript("again");
  callAll(harness,
          {&H::stopTimer, readTimer,  // allowed, reads 0
           &H::startTimer, &H::startTimer, &H::resetTimer, readTimer, &H::stopTimer, &H::startTimer,
           &H::stopTimer, &H::stopMemory, &H::getMemory, &H::startMemory, &H::startMemory,
           &H::getMemory, &H::stopMemory, &H::startMemory});  // allowed, a new capture
  harness.logScriptError(nullptr);
  callAll(harness,
          {&H::endTest, &H::endTest, &H::logCheckPass, &H::logCheckFail, &H::logCheckWarn});
  harness.check_file("it", "equal", "master");
  harness.check_file_warn("it", nullptr, nullptr);
  harness.checkMemory("it", "a", "b", 1);
  harness.checkMemoryWarn("it", "a", nullptr, 1);
}

class LevelLog : public HarnessTest, public testing::WithParamInterface<int> {};

TEST_P(LevelLog, IsThatOfTheGoldenFile) {
  harness().setLogLevel(MOXLogLevel::Detailed);  // not noted: there is no log yet
  harness().openLogFile("log", false);
  for (const int level : {9, GetParam(), GetParam()}) {
    harness().setLogLevel(level);
  }
  harness().startTest("before the script", nullptr);
  harness().startScript("A script that does everything");
  checkFiles(harness());
  checkMemory(harness());
  measure(harness());
  callInTheWrongOrder(harness());
  MOXTestHarness::writeText("written at every level\n");
  EXPECT_EQ(harness().endScript(false), GetParam() == MOXLogLevel::None);
  expectGolden(TestFolder::read("log"), "level" + std::to_string(GetParam()) + ".log");
}

INSTANTIATE_TEST_SUITE_P(Every, LevelLog, testing::Range(0, 5));

#ifdef ORVDIFF_HARNESS_EXAMPLE
using ExampleScript = HarnessTest;

TEST_F(ExampleScript, LeavesTheGoldenLogAndFails) {
  const int status = std::system("\"" ORVDIFF_HARNESS_EXAMPLE "\" > console");
  EXPECT_EQ(WEXITSTATUS(status), EXIT_FAILURE) << "its second test case fails";
  expectGolden(TestFolder::read("results.mxr"), "example.log");
  expectGolden(TestFolder::read("console"), "example.console");
}
#endif

}  // namespace

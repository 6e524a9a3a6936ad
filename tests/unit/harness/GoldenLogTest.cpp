#include <sys/wait.h>

#include <array>
#include <regex>

#include "HarnessTest.h"

namespace {

/// What differs from run to run, and what stands for it in the golden files: of equal width where
/// the log has columns.
const char* const kMasks[][2] = {
    {"[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}",
     "Www Mmm dd hh:mm:ss yyyy"},
    {"Get Timer: \\d+", "Get Timer: N"},
    {"Get Memory: \\d+", "Get Memory: N"},
};

std::string masked(std::string log) {
  for (const auto& [pattern, replacement] : kMasks) {
    log = std::regex_replace(log, std::regex(pattern), replacement);
  }
  return log;
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

void measure(MOXTestHarness& harness) {
  harness.startTest("Measurements", "");  // the test case before is still open
  harness.startTimer();
  harness.stopTimer();
  harness.getTimer(true, true);
  harness.getTimer(false, false);
  harness.resetTimer();
  harness.startMemory();
  harness.stopMemory();
  harness.getMemory();
  harness.endTest();
}

void callInTheWrongOrderInside(MOXTestHarness& harness) {
  harness.startTest(nullptr, nullptr);
  harness.startScript("again");
  harness.stopTimer();
  harness.getTimer(true, true);  // allowed, reads 0
  harness.startTimer();
  harness.startTimer();
  harness.resetTimer();
  harness.getTimer(true, true);
  harness.stopTimer();
  harness.startTimer();
  harness.stopTimer();
  harness.stopMemory();
  harness.getMemory();
  harness.startMemory();
  harness.startMemory();
  harness.getMemory();
  harness.stopMemory();
  harness.startMemory();  // allowed, a new capture
  harness.logScriptError(nullptr);
  harness.endTest();
}

void callInTheWrongOrderOutside(MOXTestHarness& harness) {
  harness.endTest();
  harness.logCheckPass();
  harness.logCheckFail();
  harness.logCheckWarn();
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
  callInTheWrongOrderInside(harness());
  callInTheWrongOrderOutside(harness());
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

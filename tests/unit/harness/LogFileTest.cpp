#include <cstdlib>

#include "HarnessTest.h"

namespace {

using LogFileTest = HarnessTest;

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(LogFileTest, TruncatesOrAppendsAndHasADefaultName) {
  EXPECT_FALSE(harness().closeLogFile());
  for (const bool atEnd : {false, true, true, false, true}) {
    EXPECT_TRUE(harness().openLogFile(nullptr, atEnd));
    MOXTestHarness::writeText(atEnd ? "appended " : "new ");
  }
  MOXTestHarness::writeText(nullptr);
  EXPECT_TRUE(harness().closeLogFile());
  EXPECT_FALSE(harness().closeLogFile());
  EXPECT_EQ(readFile("results.mxr"), "new appended (null)");
}

TEST_F(LogFileTest, OutputOfALogThatCannotBeOpenedIsLost) {
  EXPECT_FALSE(harness().openLogFile("missing/log", false));
  MOXTestHarness::writeText("lost");
  EXPECT_FALSE(harness().closeLogFile());
  MOXTestHarness::writeText("found");
  EXPECT_EQ(console(), "found");
}

TEST_F(LogFileTest, AFullDiskChangesNoVerdict) {
  for (const bool isEqual : {true, false}) {
    harness().setLogLevel(MOXLogLevel::Detailed);
    EXPECT_TRUE(harness().openLogFile("/dev/full", false));
    harness().startScript(nullptr);
    harness().startTest("test", nullptr);
    EXPECT_EQ(harness().checkMemory("it", "a", isEqual ? "a" : "b", 1), isEqual);
    harness().endTest();
    EXPECT_EQ(harness().endScript(false), isEqual);
  }
}

TEST_F(LogFileTest, TheConsoleShowsOneBannerThatNamesTheLogFile) {
  const struct {
    int level;
    const char* logFile;  // null: none is opened
    const char* line;
  } kRows[] = {
      {MOXLogLevel::Normal, "log", "= Log File: log        "},
      {MOXLogLevel::None, "log", "= Log File: log        "},
      {MOXLogLevel::Normal, "./././././././././././././././././././././././././././././././././log",
       "= Log File: ./././././././././././././././././././././././././././././././././log      "
       "=\n"},
      {MOXLogLevel::Concise, "", "= Log File: None      "},
      {MOXLogLevel::Minimal, "log", nullptr},
      {MOXLogLevel::Minimal, nullptr, nullptr},
      {MOXLogLevel::Normal, nullptr, nullptr},
  };
  for (const auto& row : kRows) {
    const std::size_t before = console().size();
    if (row.logFile != nullptr) {
      harness().openLogFile(row.logFile, false);
    }
    harness().setLogLevel(row.level);
    harness().startScript("text");
    const std::string banner = console().substr(before);
    EXPECT_EQ(countOf(banner, "Test Started"), 1U) << banner;
    EXPECT_EQ(countOf(banner, "Log File"), row.line != nullptr) << banner;
    EXPECT_EQ(countOf(banner, row.line != nullptr ? row.line : "Test Started"), 1U) << banner;
    harness().endScript(false);
  }
}

TEST_F(LogFileTest, TheWorkingFolderComesFromTheEnvironment) {
  harness().endScript(false);
  std::filesystem::create_directory("folder");
  setenv("MOX_EFFECTIVE_WORKING_DIR", "folder", 1);
  harness().openLogFile(nullptr, false);
  unsetenv("MOX_EFFECTIVE_WORKING_DIR");
  EXPECT_EQ(std::filesystem::current_path().filename(), "folder");
  EXPECT_TRUE(std::filesystem::exists("results.mxr"));
}

}  // namespace

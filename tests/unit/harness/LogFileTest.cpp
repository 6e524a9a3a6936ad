#include "HarnessTest.h"

namespace {

using LogFileTest = HarnessTest;

TEST_F(LogFileTest, TruncatesOrAppendsAndHasADefaultName) {
  EXPECT_FALSE(harness().closeLogFile());
  for (const bool atEnd : {false, true, true, false, true}) {
    EXPECT_TRUE(harness().openLogFile(nullptr, atEnd));
    MOXTestHarness::writeText(atEnd ? "appended " : "new ");
  }
  MOXTestHarness::writeText(nullptr);
  EXPECT_TRUE(harness().closeLogFile());
  EXPECT_TRUE(MOXTestHarness::isLastLogComplete());
  EXPECT_FALSE(harness().closeLogFile());
  EXPECT_EQ(TestFolder::read("results.mxr"), "new appended (null)");
}

TEST_F(LogFileTest, OutputOfALogThatCannotBeOpenedIsLost) {
  EXPECT_FALSE(harness().openLogFile("missing/log", false));
  MOXTestHarness::writeText("lost");
  EXPECT_FALSE(harness().closeLogFile());
  EXPECT_FALSE(MOXTestHarness::isLastLogComplete());
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
    EXPECT_FALSE(MOXTestHarness::isLastLogComplete());
  }
}

TEST_F(LogFileTest, TheConsoleShowsOneBannerThatNamesTheLogFile) {
  const std::string kLong = "./././././././././././././././././././././././././././././././././log";
  const struct {
    int level;
    const char* logFile;  // null: none is opened
    std::string line;     // empty: there is none
  } kRows[] = {
      {MOXLogLevel::None, "log", "= Log File: log        "},
      {MOXLogLevel::Normal, kLong.c_str(), "= Log File: " + kLong + "      =\n"},
      {MOXLogLevel::Concise, "", "= Log File: None      "},
      {MOXLogLevel::Minimal, "log", ""},
      {MOXLogLevel::Normal, nullptr, ""},
  };
  for (const auto& row : kRows) {
    const std::size_t before = console().size();
    if (row.logFile != nullptr) {
      harness().openLogFile(row.logFile, false);
    }
    harness().setLogLevel(row.level);
    harness().startScript("text");
    const std::string banner = console().substr(before);
    const auto start = banner.find("Test Started");
    EXPECT_NE(start, std::string::npos);
    EXPECT_EQ(start, banner.rfind("Test Started"));
    EXPECT_THAT(banner, testing::HasSubstr(row.line));
    EXPECT_EQ(banner.find("Log File") == std::string::npos, row.line.empty()) << banner;
    EXPECT_EQ(banner.find("Log File"), banner.rfind("Log File"));
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

#include <set>

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
  EXPECT_EQ(TestFolder::read("results.mxr"), "new appended (null)");
  EXPECT_FALSE(harness().openLogFile("missing/log", false));
  MOXTestHarness::writeText("lost");
  EXPECT_FALSE(harness().closeLogFile());
  MOXTestHarness::writeText("found");
  EXPECT_FALSE(harness().closeLogFile());
  harness().setLogLevel(MOXLogLevel::Normal);  // not noted: the console is the log no more
  EXPECT_EQ(console(), "found");
}

TEST_F(LogFileTest, AFullDiskChangesNoVerdictButTheLogIsIncomplete) {
  for (const char* const file : {"log", "/dev/full"}) {
    const bool isComplete = *file == 'l';
    for (const bool isEqual : {true, false}) {
      startTest(MOXLogLevel::Detailed);
      EXPECT_TRUE(harness().openLogFile(file, false));
      EXPECT_EQ(harness().checkMemory("it", "a", isEqual ? "a" : "b", 1), isEqual);
      EXPECT_EQ(MOXTestHarness::isLogComplete(), isComplete);
      harness().openLogFile(file, false);  // now only the report is left to be lost
      EXPECT_TRUE(MOXTestHarness::isLogComplete());
      EXPECT_EQ(harness().endScript(false), isEqual);
      EXPECT_EQ(MOXTestHarness::isLogComplete(), isComplete);
    }
    harness().openLogFile(file, false);
    MOXTestHarness::writeText("still in the buffer");
    harness().endScript(false);  // at level None: without a report
    EXPECT_EQ(MOXTestHarness::isLogComplete(), isComplete);
  }
}

TEST_F(LogFileTest, TheConsoleShowsOneBannerWithTheTimeOfNow) {
  const std::tuple<MOXLogLevel, const char*, const char*> kRows[] = {
      {MOXLogLevel::None, "log", "= Log File: log        "},
      {MOXLogLevel::Normal, "././././././././././././././log", "./log "},  // a long one is whole
      {MOXLogLevel::Concise, "", "= Log File: None      "},
      {MOXLogLevel::Minimal, "log", ""},
      {MOXLogLevel::Normal, nullptr, ""}};  // no log file is opened
  std::set<std::string> dates;
  for (const auto& [level, logFile, line] : kRows) {
    const std::size_t before = console().size();
    if (logFile != nullptr) {
      harness().openLogFile(logFile, false);
    }
    harness().setLogLevel(level);
    setenv("TZ", level == MOXLogLevel::None ? "EAST-24" : "WEST+24", 1);
    harness().startScript("text");
    const std::string banner = console().substr(before);
    const auto start = banner.find("Test Started: ");
    EXPECT_EQ(start, banner.rfind("Test Started: "));
    dates.insert(banner.substr(start, 24));
    EXPECT_THAT(banner, HasSubstr(line));
    EXPECT_EQ(banner.find("Log File") == std::string::npos, *line == '\0') << banner;
    harness().endScript(false);
  }
  unsetenv("TZ");
  EXPECT_EQ(dates.size(), 2U) << *dates.begin();
}

TEST_F(LogFileTest, TheWorkingFolderComesFromTheEnvironment) {
  const std::filesystem::path start = std::filesystem::current_path();
  std::filesystem::create_directories("folder/folder");
  for (const std::string value : {"folder", "folder", "folder", "..", "", "missing"}) {
    harness().endScript(false);
    setenv("MOX_EFFECTIVE_WORKING_DIR", value.c_str(), 1);
    harness().openLogFile(nullptr, false);  // never the folder inside the folder
    EXPECT_EQ(std::filesystem::current_path(), value == "folder" ? start / value : start) << value;
    EXPECT_TRUE(std::filesystem::remove("results.mxr"));
  }
  unsetenv("MOX_EFFECTIVE_WORKING_DIR");
}

}  // namespace

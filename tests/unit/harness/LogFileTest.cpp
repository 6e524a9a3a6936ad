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
  EXPECT_FALSE(harness().closeLogFile());
  EXPECT_EQ(TestFolder::read("results.mxr"), "new appended (null)");
}

TEST_F(LogFileTest, WithoutAFileTheLogIsLostOrTheConsole) {
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

TEST_F(LogFileTest, TheConsoleShowsOneBannerThatNamesTheLogFile) {
  const std::string kLong = "./././././././././././././././././././././././././././././././././log";
  const std::tuple<MOXLogLevel, const char*, std::string> kRows[] = {
      {MOXLogLevel::None, "log", "= Log File: log        "},
      {MOXLogLevel::Normal, kLong.c_str(), "= Log File: " + kLong + "      =\n"},
      {MOXLogLevel::Concise, "", "= Log File: None      "},
      {MOXLogLevel::Minimal, "log", ""},
      {MOXLogLevel::Normal, nullptr, ""},  // no log file is opened
  };
  for (const auto& [level, logFile, line] : kRows) {
    const std::size_t before = console().size();
    if (logFile != nullptr) {
      harness().openLogFile(logFile, false);
    }
    harness().setLogLevel(level);
    harness().startScript("text");
    const std::string banner = console().substr(before);
    const auto start = banner.find("Test Started");
    EXPECT_NE(start, std::string::npos);
    EXPECT_EQ(start, banner.rfind("Test Started"));
    EXPECT_THAT(banner, testing::HasSubstr(line));
    EXPECT_EQ(banner.find("Log File") == std::string::npos, line.empty()) << banner;
    harness().endScript(false);
  }
}

TEST_F(LogFileTest, TheWorkingFolderComesFromTheEnvironment) {
  const std::filesystem::path start = std::filesystem::current_path();
  const std::pair<const char*, std::filesystem::path> kScripts[] = {
      {"folder", start / "folder"},
      {"folder", start / "folder"},  // not the one inside it
      {"folder", start / "folder"},
      {"..", start},
      {"", start},
      {"missing", start},
  };
  std::filesystem::create_directories("folder/folder");
  for (const auto& [value, folder] : kScripts) {
    harness().endScript(false);
    setenv("MOX_EFFECTIVE_WORKING_DIR", value, 1);
    harness().openLogFile(nullptr, false);
    EXPECT_EQ(std::filesystem::current_path(), folder) << value;
    EXPECT_TRUE(std::filesystem::remove(folder / "results.mxr"));
  }
  unsetenv("MOX_EFFECTIVE_WORKING_DIR");
}

TEST_F(LogFileTest, TimesFollowTheTimeZone) {
  std::set<std::string> dates;
  for (const char* const zone : {"EAST-24", "WEST+24"}) {
    setenv("TZ", zone, 1);
    harness().startScript(nullptr);
    const std::string label = "Test Started: ";
    dates.insert(console().substr(console().rfind(label) + label.size(), 10));
    harness().endScript(false);
  }
  unsetenv("TZ");
  EXPECT_EQ(dates.size(), 2U) << *dates.begin();
}

}  // namespace

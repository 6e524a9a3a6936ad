#include <unistd.h>

#include "orvdiff/compare/OrvDiffLib.h"
#include "tests/support/Testing.h"

namespace {

using namespace std::string_literals;

TEST(CompareStrings, PositionOfTheFirstDifference) {
  const std::string kLong(4096, 'x');
  const std::string kLonger = kLong + kLong;
  // clang-format off
  const std::tuple<std::string, std::string, std::size_t> kRows[] = {
      {"", "", std::string::npos}, {"ab", "abc", 2}, {"abc", "ab", 2}, {"", "x", 0},
      {"\xE9", "\xC3\xA9", 0}, {kLonger, kLonger, std::string::npos},
      {kLong + "a", kLong + "b", 4096}, {kLong, kLong + "x", 4096},
      {kLonger + "a", kLonger + "b", 8192}};
  // clang-format on
  for (const auto& [master, current, position] : kRows) {
    EXPECT_EQ(OrvDiffLib::compareStrings(master.c_str(), current.c_str()), position);
  }
}

TEST(TextFileComparison, FromDiskAndFromMemory) {
  const OrvDiffNormalizationPattern letters("[a-z]", nullptr);
  const OrvDiffNormalizationPattern digits("(?:[0-9])", nullptr);  // which only ICU runs
  const OrvPatternList none, fast = {&letters}, slow = {&digits};
  const std::tuple<const OrvPatternList&, std::string, std::string, std::string> kRows[] = {
      // clang-format off
      {none, "a\r\nb", "a\nb", "pass m a"}, {none, "\r\r\r", "", "pass m a"},
      {none, "same\0x"s, "same\0y"s, "pass m a"}, {none, "same\0x"s, "same, not", "diff m a"},
      {none, "\xE9", "\xE8", "diff m a"}, {fast, "aX", "bcX\r", "pass m a"},
      {fast, "\xE9", "\xE8", "normalized m a at 0 \xE9|\xE8"}, {slow, "X1", "X23", "pass m a"},
      {slow, "1\xE9", "2\xE8", "normalized m a at 0 \xE9|\xE8"},
      {slow, "a\r1b", "ac", "normalized m a at 1 ab|ac"},
      // clang-format on
  };
  const TestFolder folder;
  for (const auto& [patterns, master, actual, expected] : kRows) {
    TestFolder::write("m", master);
    TestFolder::write("a", actual);
    for (const char* const text : {static_cast<const char*>(nullptr), actual.c_str()}) {
      EXPECT_EQ(described(OrvDiffLib::textFileComparison("m", "a", patterns, false, text)),
                expected)
          << master << " / " << actual;
    }
  }
  TestFolder::write("m", "a1\r\n\0hidden"s);
  TestFolder::write("sub/a", "a22\n");
  TestFolder::write("m.cleansed", "something longer from before");
  EXPECT_EQ(described(OrvDiffLib::textFileComparison("m", "sub/a", slow, true, nullptr)),
            "pass m sub/a");
  EXPECT_EQ(TestFolder::read("m.cleansed") + TestFolder::read("sub/a.cleansed"), "a\na\n");
  EXPECT_EQ(described(OrvDiffLib::textFileComparison("sub/a", "sub/a", none, true, nullptr)),
            "pass sub/a sub/a");
  EXPECT_EQ(TestFolder::read("sub/a.cleansed"), "a22\n");  // also of equal files
  const char* const kMissing[][4] = {{"none", "none2", nullptr, "missing none none2 none"},
                                     {"m", "none2", nullptr, "missing m none2 none2"},
                                     {".", "m", nullptr, "missing . m ."},
                                     {"m", "none2/a", "a1\n", "pass m none2/a"}};
  for (const auto& [master, actual, text, expected] : kMissing) {
    EXPECT_EQ(described(OrvDiffLib::textFileComparison(master, actual, none, true, text)),
              expected);
  }
}

TEST(TextFileComparison, RefusesWhatIsNull) {
  const TestFolder folder;
  TestFolder::write("m", "same");
  OrvTextBuffer text = OrvDiffLib::strdupnew("a\rb"), none;
  EXPECT_EQ(raisedBy([&] { OrvDiffLib::cleanse(none, none, {}); }),
            "OrvDiffLib: VEL_ASSERT(masterBuffer.get());");
  EXPECT_EQ(raisedBy([&] { OrvDiffLib::cleanse(text, none, {}); }),
            "OrvDiffLib: VEL_ASSERT(currentBuffer.get());");
  EXPECT_EQ(raisedBy([] { OrvDiffLib::textFileComparison("m", "m", {nullptr}, false, nullptr); }),
            "OrvDiffLib: VEL_ASSERT(pattern);");
}

TEST(TextFileComparison, APassSaysWhichFileContainsANul) {
  const std::tuple<std::string, std::string, const char*> kRows[] = {
      {"a\0b"s, "a\0b"s, nullptr}, {"a\0b"s, "a\0c"s, "a"}, {"a\0b"s, "a\r"s, "m"},
      {"a", "a\0"s, "a"},          {"a\r", "a", nullptr},
  };
  const TestFolder folder;
  const auto expectPass = [](OrvDiffResult* compared, const char* fileWithNul) {
    const std::unique_ptr<OrvDiffResult> result(compared);
    EXPECT_TRUE(result->isPassed());
    const auto* const cut = dynamic_cast<OrvDiffResultPassUpToNul*>(result.get());
    EXPECT_EQ(cut != nullptr ? cut->getCutFile() : "none",
              fileWithNul != nullptr ? fileWithNul : "none");
  };
  for (const auto& [master, actual, fileWithNul] : kRows) {
    TestFolder::write("m", master);
    TestFolder::write("a", actual);
    expectPass(OrvDiffLib::textFileComparison("m", "a", {}, false, nullptr), fileWithNul);
    expectPass(OrvDiffLib::vmdFileComparison("m", "a", nullptr), fileWithNul);
    const char* const masterWithNul = master.find('\0') != std::string::npos ? "m" : nullptr;
    expectPass(OrvDiffLib::vmdFileComparison("m", "a", actual.c_str()), masterWithNul);
  }
}

std::string vmd(const std::string& mode, const std::string& objects, const std::string& pageOuts,
                const std::string& referenced) {
  return "VMD\nany\nMapping Mode - " + mode + "\nany\n" +
         "Mapping Statistics - Virtual Objects (Current/Max/Cumulative): " + objects +
         "\nPaging Statistics - Page Ins: 9, Page Outs: " + pageOuts +
         "\nother\nTotal Objects with reference count > 0 : " + referenced + "\n";
}

TEST(VmdCompare, AllowsForWhatVariesFromRunToRun) {
  const std::string kBase = vmd("Direct", "1/2/100", "10", "7");
  const std::string kUnended = kBase.substr(0, kBase.size() - 1);
  const std::string kCut = kBase.substr(0, kBase.find("0\nother"));
  const std::string kUnreadable = "VMD\nany\nmapping mode - x\n";
  const std::tuple<std::string, std::string, bool> kRows[] = {
      // clang-format off
      {kBase, vmd("Direct", "5/6/120", "12", "7"), true},
      {kBase, vmd("Direct", "1/2/121", "10", "7"), false},
      {kBase, vmd("Direct", "1/2/100", "13", "7"), false},
      {kBase, vmd("Direct", "1/2/100", "10", "8"), false},
      {kBase, vmd("direct", "1/2/100", "10", "7"), false},
      // Counters that wrapped around are as near as before.
      {vmd("D", "1/2/4294967295", "4294967295", "7"), vmd("D", "1/2/19", "1", "7"), true},
      // Only a line's beginning counts, and the last such line.
      {kBase + "Total Objects with reference count > 0 : 9\n", kBase, false},
      {kBase + " Total Objects with reference count > 0 : 9\n", kBase, true},
      // What cannot be read keeps its initial value; unreadable reports always differ.
      {vmd("Direct", "1/2/-", "-", "-"), vmd("Direct", "1/2/20", "2", "0"), true},
      {kUnreadable, kUnreadable, false}, {kUnended, kBase, false}, {kCut, kCut, false}};
  // clang-format on
  for (const auto& [master, actual, passes] : kRows) {
    EXPECT_EQ(described(OrvDiffLib::vmdCompare("m", "a", master.c_str(), actual.c_str())),
              passes ? "pass m a" : "diff m a")
        << master << "---\n"
        << actual;
  }
}

}  // namespace

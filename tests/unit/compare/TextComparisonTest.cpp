#include <unistd.h>

#include "orvdiff/compare/OrvDiffLib.h"
#include "tests/support/Testing.h"

namespace {

using namespace std::string_literals;

TEST(CompareStrings, PositionOfTheFirstDifference) {
  const std::string kLong(4096, 'x');
  const struct {
    std::string master;
    std::string current;
    std::size_t position;
  } kRows[] = {{"", "", std::string::npos},
               {"ab", "abc", 2},
               {"abc", "ab", 2},
               {"", "x", 0},
               {"\xE9", "\xC3\xA9", 0},
               {kLong + kLong, kLong + kLong, std::string::npos},
               {kLong + "a", kLong + "b", 4096},
               {kLong, kLong + "x", 4096},
               {kLong + kLong + "a", kLong + kLong + "b", 8192}};
  for (const auto& row : kRows) {
    EXPECT_EQ(OrvDiffLib::compareStrings(row.master.c_str(), row.current.c_str()), row.position);
  }
}

TEST(ComparisonResult, OnlyANormalisedDifferenceTakesTheTexts) {
  const struct {
    std::size_t position;
    bool normalized;
    const char* described;
  } kRows[] = {{std::string::npos, true, "pass m a"},
               {3, false, "diff m a"},
               {3, true, "normalized m a at 3 abcX|abcY"}};
  for (const auto& row : kRows) {
    OrvTextBuffer master = OrvDiffLib::strdupnew("abcX");
    OrvTextBuffer actual = OrvDiffLib::strdupnew("abcY");
    EXPECT_EQ(described(OrvDiffLib::createComparisonResult("m", "a", master, actual, row.position,
                                                           row.normalized)),
              row.described);
    EXPECT_EQ(master == nullptr && actual == nullptr, *row.described == 'n');
  }
}

TEST(TextFileComparison, FromDiskAndFromMemory) {
  const OrvDiffNormalizationPattern letters("[a-z]", nullptr);
  const OrvDiffNormalizationPattern digits("(?:[0-9])", nullptr);  // in a form that only ICU runs
  const OrvPatternList none;
  const OrvPatternList fast = {&letters};
  const OrvPatternList slow = {&digits};
  const struct {
    const OrvPatternList& patterns;
    std::string master;
    std::string actual;
    std::string described;
  } kRows[] = {
      {none, "a\r\nb", "a\nb", "pass m a"},
      {none, "\r\r\r", "", "pass m a"},
      {none, "same\0x"s, "same\0y"s, "pass m a"},
      {none, "same\0x"s, "same, not", "diff m a"},
      {none, "\xE9", "\xE8", "diff m a"},
      {fast, "aX", "bcX\r", "pass m a"},
      {fast, "\xE9", "\xE8", "normalized m a at 0 \xE9|\xE8"},
      {slow, "X1", "X23", "pass m a"},
      {slow, "1\xE9", "2\xE8", "normalized m a at 0 \xE9|\xE8"},
      {slow, "a\r1b", "ac", "normalized m a at 1 ab|ac"},
  };
  const TestFolder folder;
  for (const auto& row : kRows) {
    TestFolder::write("m", row.master);
    TestFolder::write("a", row.actual);
    for (const char* const text : {static_cast<const char*>(nullptr), row.actual.c_str()}) {
      EXPECT_EQ(described(OrvDiffLib::textFileComparison("m", "a", row.patterns, false, text)),
                row.described)
          << row.master << " / " << row.actual;
    }
  }
  TestFolder::write("m", "a1\r\n\0hidden"s);
  TestFolder::write("sub/a", "a22\n");
  TestFolder::write("m.cleansed", "something longer from before");
  EXPECT_EQ(described(OrvDiffLib::textFileComparison("m", "sub/a", slow, true, nullptr)),
            "pass m sub/a");
  EXPECT_EQ(TestFolder::read("m.cleansed") + TestFolder::read("sub/a.cleansed"), "a\na\n");
  const char* const kMissing[][4] = {{"none", "none2", nullptr, "missing none none2 none"},
                                     {"m", "none2", nullptr, "missing m none2 none2"},
                                     {".", "m", nullptr, "missing . m ."},
                                     {"m", "none2/a", "a1\n", "pass m none2/a"}};
  for (const auto& [master, actual, text, expected] : kMissing) {
    EXPECT_EQ(described(OrvDiffLib::textFileComparison(master, actual, none, true, text)),
              expected);
  }
}

/// The name of a pipe that holds `contents` and nothing more.
std::string pipeWith(const std::string& contents) {
  int ends[2] = {};
  EXPECT_EQ(pipe(ends), 0);
  EXPECT_EQ(write(ends[1], contents.data(), contents.size()),
            static_cast<ssize_t>(contents.size()));
  close(ends[1]);
  return "/dev/fd/" + std::to_string(ends[0]);
}

TEST(TextFileComparison, WhatCanBeReadOnlyOnceIsNeverTakenForEmpty) {
  const std::string master = pipeWith("one text");
  const std::string actual = pipeWith("another text");
  EXPECT_EQ(raisedBy([&] {
              described(OrvDiffLib::textFileComparison(master, actual, {}, false, nullptr));
            }),
            "OrvDiffLib: VEL_ASSERT_NAMED(ok, \"Unable to read all of the contents of file \");");
}

TEST(TextFileComparison, RefusesWhatIsNull) {
  const TestFolder folder;
  TestFolder::write("m", "same");
  OrvTextBuffer text = OrvDiffLib::strdupnew("a\rb");
  OrvTextBuffer none;
  EXPECT_EQ(raisedBy([&] { OrvDiffLib::cleanse(none, none, {}); }),
            "OrvDiffLib: VEL_ASSERT(masterBuffer.get());");
  EXPECT_EQ(raisedBy([&] { OrvDiffLib::cleanse(text, none, {}); }),
            "OrvDiffLib: VEL_ASSERT(currentBuffer.get());");
  EXPECT_EQ(raisedBy([] { OrvDiffLib::textFileComparison("m", "m", {nullptr}, false, nullptr); }),
            "OrvDiffLib: VEL_ASSERT(pattern);");
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
  const std::string kUnreadable = "VMD\nany\nmapping mode - x\n";
  const struct {
    std::string master;
    std::string actual;
    bool passes;
  } kRows[] = {
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
      // What cannot be read or is not reached keeps its initial value.
      {vmd("Direct", "1/2/-", "-", "-"), vmd("Direct", "1/2/20", "2", "0"), true},
      // Unreadable reports differ, even from themselves.
      {kUnreadable, kUnreadable, false},
      {kUnended, kBase, false},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(described(OrvDiffLib::vmdCompare("m", "a", row.master.c_str(), row.actual.c_str())),
              row.passes ? "pass m a" : "diff m a")
        << row.master << "---\n"
        << row.actual;
  }
}

}  // namespace

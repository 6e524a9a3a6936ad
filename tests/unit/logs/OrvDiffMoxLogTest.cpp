#include "orvdiff/logs/OrvDiffMoxLog.h"

#include <limits>

#include "tests/unit/harness/HarnessTest.h"

namespace {

class OrvDiffMoxLogTest : public HarnessTest, public OrvDiffMoxLog {
 protected:
  void logCheck(const char* description, bool passed) override {
    m_checks += std::string(passed ? "+ " : "- ") + description + "\n";
  }
  MOXTestHarness* getHarness() override { return m_harness; }

  std::string m_checks;
  MOXTestHarness* m_harness = MOXTestHarness::getInstance();
};

OrvDiffResultFailDiffNormalized difference(const char* master, const char* actual,
                                           std::uint64_t position) {
  return {"m", "a", copyOf(master), copyOf(actual), position};
}

TEST_F(OrvDiffMoxLogTest, EveryResultIsOneCheck) {
  OrvDiffResultPass("masters/r.html", "r.html").notifyListener(*this);
  OrvDiffResultFail("m", "a").notifyListener(*this);
  OrvDiffResultFailDiff("m", "a").notifyListener(*this);
  OrvDiffResultFailFileMissing("m", "a", "m").notifyListener(*this);
  OrvDiffResultFailFileMissing("m", "a", "a").notifyListener(*this);
  EXPECT_EQ(m_checks,
            "+ Contents are equivalent: masters/r.html and r.html\n"
            "- Contents are equivalent: m and a\n"
            "- Contents are equivalent: m and a\n"
            "- Master file is missing: m\n"
            "- Actual file is missing: a\n");
  EXPECT_EQ(console(), "");
}

TEST_F(OrvDiffMoxLogTest, NormalizedDifferencesAreDumped) {
  const std::string headline = ">>  FAILED: Check File: m and a\n";
  const std::string columns(60, ' ');
  const std::string nothing = "0 bytes compared.  A total of 0 bytes unequal\n\n";
  const std::string many(300, 'x');
  const std::tuple<int, std::string, std::string, std::uint64_t, std::string, std::string> kRows[] =
      {
          {MOXLogLevel::None, "abc", "abd", 2, "", ""},
          {MOXLogLevel::Concise, "abc", "abd", 2, headline, headline},
          {MOXLogLevel::Normal, "abc", "abd", 2,
           headline + "Offset: 0X2 (2)\n  actual:  64" + columns + "     d\nexpected:  63" +
               columns + "     c\n           ^^" + columns + "     ^\n",
           "\n1 bytes compared.  A total of 1 bytes unequal\n\n"},
          {MOXLogLevel::Normal, "abc", "abcd", 3, headline, headline + nothing},
          {MOXLogLevel::Normal, "abc", "abd", 7, headline, headline + nothing},
          {MOXLogLevel::Detailed, "a" + many, "b" + many, 0, headline,
           "\n128 bytes compared.  A total of 1 bytes unequal\n\n"},
      };
  for (const auto& [level, master, actual, position, start, end] : kRows) {
    m_checks.clear();
    harness().setLogLevel(level);
    const auto result = difference(master.c_str(), actual.c_str(), position);
    harness().openLogFile("log", false);
    result.notifyListener(*this);
    const std::string written = TestFolder::read("log");  // unflushed, as after a crash
    EXPECT_EQ(m_checks, "- Normalized contents are equivalent: m and a\n");
    EXPECT_THAT(written, StartsWith(start));
    EXPECT_THAT(written, EndsWith(end));
    EXPECT_EQ(written.empty(), end.empty());
    harness().closeLogFile();
  }
}

TEST_F(OrvDiffMoxLogTest, BrokenContractsRaiseAfterTheCheck) {
  constexpr auto kNoDifference = std::numeric_limits<std::uint64_t>::max();
  const std::tuple<const char*, const char*, std::uint64_t, const char*> kRows[] = {
      {nullptr, "b", 0, "VEL_ASSERT(masterBuffer);"},
      {"a", nullptr, 0, "VEL_ASSERT(actualBuffer);"},
      {"a", "b", kNoDifference, "VEL_ASSERT(value <= UINT32_MAX);"},
      {"a", "b", 1, "VEL_ASSERT(harness);"}};
  for (const auto& [master, actual, position, text] : kRows) {
    m_checks.clear();
    m_harness = position == 1 ? nullptr : &harness();
    const auto result = difference(master, actual, position);
    EXPECT_THAT(storyOf([&] { result.notifyListener(*this); }), StartsWith(text));
    EXPECT_EQ(m_checks, "- Normalized contents are equivalent: m and a\n");
  }
}

}  // namespace

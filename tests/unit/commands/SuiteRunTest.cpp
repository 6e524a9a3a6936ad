#include "cli/commands/SuiteRun.h"

#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

#include "cli/system/CommandError.h"
#include "tests/support/Testing.h"

/// Blocks that are larger cannot be had.
static std::size_t s_largestBlock = std::numeric_limits<std::size_t>::max();

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const block = size <= s_largestBlock ? std::malloc(size) : nullptr;
  return block != nullptr ? block : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

struct RaisingSaver : NormalizedSaver {
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized&) override {
    throw std::runtime_error("no room");
  }
};

TEST(SuiteRun, ALogThatCannotTakeAResultDoesNotKeepItFromTheOthers) {
  const TestFolder folder;
  const std::vector<std::string> reports = {"R.xml", "S.xml"};
  for (const char* const name : {"R.html", "S.html"}) {
    TestFolder::write(std::filesystem::path("Masters") / name, "<p>x</p>");
    TestFolder::write(std::filesystem::path("../webcontent/bi/v5DebugHTML") / name, "<p>y</p>");
  }
  FormatOptions options;
  options.names = {"html"};
  const std::vector<SelectedFormat> formats = selectFormats(options);
  const PairOwners owners(reports, {});
  PairVerifier verifier(reports, formats, owners, {});
  const Palette palette(ColorChoice::Never);
  GroupPrinter printer(true, Verbosity::Quiet, palette);
  OutputPlace place("harness log", "log");
  HarnessLog log(place, MOXLogLevel::Normal);
  log.start();
  RaisingSaver saver;
  SuiteRun run(reports, verifier, printer, {nullptr, &saver, &log, nullptr});
  run.verify({1, 0, 0}, false);
  log.finish({});
  EXPECT_THAT(run.totals().incomplete,
              ElementsAre("the list of saved texts misses results: no room"));
  EXPECT_THAT(TestFolder::read("log"), HasSubstr("FAILED: Check File: Masters/R.html"));
  EXPECT_THAT(TestFolder::read("log"), HasSubstr("FAILED: Check File: Masters/S.html"));
}

TEST(SummaryFile, IsNotWrittenWithoutAnEntryThatFoundNoRoom) {
  const TestFolder folder;
  OutputPlace place("summary", "s.xml");
  SummaryFile summary(&place);
  s_largestBlock = 10'000;
  for (int i = 0; i < 100; ++i) {
    OrvDiffResultPass("m", "a").notifyListener(summary.listener());
  }
  s_largestBlock = std::numeric_limits<std::size_t>::max();
  EXPECT_THROW(summary.finish(), CommandError);
  EXPECT_EQ(TestFolder::read("s.xml"), "(missing)");
}

}  // namespace

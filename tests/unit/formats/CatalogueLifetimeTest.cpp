#include <cstdlib>
#include <new>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/formats/OrvDiffFormats.h"
#include "tests/support/Testing.h"

namespace {
long g_livingBlocks = 0;
}

// Count the living allocations, to see patterns freed. Not inlined, or the compiler would report
// new and free as mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++g_livingBlocks;
  return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
  g_livingBlocks -= block != nullptr ? 1 : 0;
  std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace {

/// Creates text engines and destroys them one by one, comparing with the remaining ones each time.
void createCompareAndDestroy(bool firstGoesFirst) {
  std::vector<std::unique_ptr<OrvDiffFileEngine>> engines;
  for (const char* const format : {"html", "nao", "single-xls"}) {
    engines.push_back(OrvDiffFormats::find(format)->createEngine({}));
  }
  while (!engines.empty()) {
    engines.erase(firstGoesFirst ? engines.begin() : engines.end() - 1);
    for (const auto& engine : engines) {
      EXPECT_EQ(compared(*engine, "<p><script>x</script>", "<p><script>y</script>"), "pass m a");
    }
  }
}

TEST(CatalogueLifetime, PatternsLiveExactlyAsLongAsAnEngineHoldsThem) {
  const TestFolder folder;
  createCompareAndDestroy(true);  // makes the allocations that last for the whole process
  for (const bool firstGoesFirst : {true, false}) {
    const long before = g_livingBlocks;
    createCompareAndDestroy(firstGoesFirst);
    EXPECT_EQ(g_livingBlocks, before);
    OrvDiffNormalizationPatterns::getPattern(OrvDiffNormalizationPatterns::eScriptElement);
    EXPECT_GT(g_livingBlocks, before);
    OrvDiffNormalizationPatterns::reset();
    EXPECT_EQ(g_livingBlocks, before);
  }
}

}  // namespace

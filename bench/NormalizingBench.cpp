#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "bench/BenchInputs.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvOriginMap.h"
#include "orvdiff/compare/pattern/FindLiteral.h"
#include "tests/support/PlainNormalizer.h"

namespace {

constexpr std::size_t kPageSize = std::size_t{256} << 10;

void setBytes(benchmark::State& state, std::size_t bytesEachTime) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesEachTime));
}

void cleanseHtml(benchmark::State& state) {
  const std::string master = makePage(kPageSize, 1);
  const std::string actual = makePage(kPageSize, 2);
  const OrvSharedPatternList patterns = htmlPatterns();
  for (auto _ : state) {
    OrvTextBuffer masterBuffer = OrvDiffLib::strdupnew(master.c_str());
    OrvTextBuffer actualBuffer = OrvDiffLib::strdupnew(actual.c_str());
    OrvDiffLib::cleanse(masterBuffer, actualBuffer, patterns.list());
    if (std::strcmp(masterBuffer.get(), actualBuffer.get()) != 0) {
      state.SkipWithError("the pages do not pass");
    }
  }
  setBytes(state, master.size() + actual.size());
}
BENCHMARK(cleanseHtml);

/// The same text as in `cleanseHtml`, but one, and with its origins.
void mapHtml(benchmark::State& state) {
  const std::string page = makePage(kPageSize, 1);
  const OrvSharedPatternList patterns = htmlPatterns();
  for (auto _ : state) {
    benchmark::DoNotOptimize(OrvOriginMap(page, patterns.list()).masks().data());
  }
  setBytes(state, page.size());
}
BENCHMARK(mapHtml);

void cleanseHtmlThroughIcu(benchmark::State& state) {
  const std::string page = makePage(kPageSize, 1);
  const OrvSharedPatternList patterns = htmlPatterns();
  for (auto _ : state) {
    benchmark::DoNotOptimize(normalizePlainly(page, patterns.list()));
  }
  setBytes(state, page.size());
}
BENCHMARK(cleanseHtmlThroughIcu);

/// One row of the catalogue on a page; most find nothing there.
void cleanseOneRow(benchmark::State& state) {
  const std::string page = makePage(kPageSize, 1);
  const OrvSharedPatternList patterns =
      catalogueRows()[static_cast<std::size_t>(state.range(0))].patterns;
  for (auto _ : state) {
    OrvTextBuffer text = OrvDiffLib::strdupnew(page.c_str());
    OrvTextBuffer empty = OrvDiffLib::strdupnew("");
    OrvDiffLib::cleanse(text, empty, patterns.list());
    benchmark::DoNotOptimize(text.get());
  }
  setBytes(state, page.size());
}
BENCHMARK(cleanseOneRow)
    ->ArgName("row")
    ->DenseRange(0, OrvDiffNormalizationPatterns::eReportSpecNamespaceVersion);

void compareEqualStrings(benchmark::State& state) {
  const std::string page = makePage(static_cast<std::size_t>(state.range(0)), 1);
  const std::string same = page;
  for (auto _ : state) {
    benchmark::DoNotOptimize(OrvDiffLib::compareStrings(page.c_str(), same.c_str()));
  }
  setBytes(state, 2 * page.size());
}
BENCHMARK(compareEqualStrings)->ArgName("bytes")->Arg(1 << 10)->Arg(1 << 18)->Arg(1 << 24);

void findLiteralThatIsNotThere(benchmark::State& state) {
  const std::string page = makePage(kPageSize, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(orvdiff::pattern::findLiteral(page, " coords=\"", 0));
  }
  setBytes(state, page.size());
}
BENCHMARK(findLiteralThatIsNotThere);

}  // namespace

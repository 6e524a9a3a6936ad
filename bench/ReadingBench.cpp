#include <benchmark/benchmark.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "bench/BenchInputs.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/platform/OrvGlob.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

void eachSize(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("bytes")->Arg(1 << 10)->Arg(1 << 18)->Arg(1 << 24);
}

void readText(benchmark::State& state) {
  const TemporaryFolder folder;
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::string path = folder.write("page.html", makePage(size, 1));
  for (auto _ : state) {
    OrvFileHandle file(path.c_str(), "r");
    benchmark::DoNotOptimize(OrvDiffLib::slurpFile(file).get());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(readText)->Apply(eachSize);

void verifyEqualBytes(benchmark::State& state) {
  const TemporaryFolder folder;
  const std::string page = makePage(static_cast<std::size_t>(state.range(0)), 1);
  const std::string master = folder.write("master.png", page);
  const std::string actual = folder.write("actual.png", page);
  OrvDiffHtmlPngFileEngine engine(nullptr);
  for (auto _ : state) {
    const std::unique_ptr<OrvDiffResult> result(engine.performDiff(master, actual, nullptr));
    if (!result->isPassed()) {
      state.SkipWithError("the files do not pass");
    }
  }
  state.SetBytesProcessed(state.iterations() * 2 * state.range(0));
}
BENCHMARK(verifyEqualBytes)->Apply(eachSize);

void compareEqualTextFiles(benchmark::State& state) {
  const TemporaryFolder folder;
  const std::string page = makePage(static_cast<std::size_t>(state.range(0)), 1);
  const std::string master = folder.write("master.html", page);
  const std::string actual = folder.write("actual.html", page);
  for (auto _ : state) {
    const std::unique_ptr<OrvDiffResult> result(
        OrvDiffLib::textFileComparison(master, actual, {}, false, nullptr));
    if (!result->isPassed()) {
      state.SkipWithError("the files do not pass");
    }
  }
  state.SetBytesProcessed(state.iterations() * 2 * state.range(0));
}
BENCHMARK(compareEqualTextFiles)->Apply(eachSize);

/// The masters of one report in a folder of many. The folder was made only just, so it is read
/// again every time. Bytes are those of the names in the folder.
void globMasters(benchmark::State& state) {
  const TemporaryFolder folder;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    folder.write("Report" + std::to_string(1000000 + i) + ".html", "");
  }
  const std::string pattern = (folder.path() / "Report1000007*.html").string();
  for (auto _ : state) {
    std::list<std::string> files;
    OrvGlob::globFiles(pattern.c_str(), files);
    if (files.size() != 1) {
      state.SkipWithError("the master was not found");
    }
  }
  state.SetBytesProcessed(state.iterations() * state.range(0) * 18);
}
BENCHMARK(globMasters)->ArgName("files")->Arg(10)->Arg(10000);

}  // namespace

#include <benchmark/benchmark.h>

#include <cstdint>
#include <iostream>
#include <string>

#include "bench/BenchInputs.h"
#include "orvdiff/harness/MOXTestHarness.h"

namespace {

void checkEqualFiles(benchmark::State& state) {
  const TemporaryFolder folder;
  const std::string content = makePage(static_cast<std::size_t>(state.range(0)), 1);
  const std::string actual = folder.write("actual", content);
  const std::string expected = folder.write("expected", content);
  MOXTestHarness* const harness = MOXTestHarness::getInstance();
  harness->openLogFile((folder.path() / "log").c_str(), false);
  std::cout.setstate(std::ios::failbit);  // the banner has no place in a table of figures
  harness->startScript(nullptr);
  std::cout.clear();
  harness->startTest("check", nullptr);
  for (auto _ : state) {
    if (harness->check_file("files", actual.c_str(), expected.c_str()) != 1) {
      state.SkipWithError("the files do not pass");
    }
  }
  harness->endScript(false);
  state.SetBytesProcessed(state.iterations() * 2 * state.range(0));
}
BENCHMARK(checkEqualFiles)->ArgName("bytes")->Arg(1 << 10)->Arg(1 << 18)->Arg(1 << 24);

}  // namespace

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "orvdiff/compare/OrvDiffFloatComparison.h"

namespace {

struct Texts {
  std::string master;
  std::string actual;
};

// 100,000 numbers of sixteen digits, 18 bytes each. Every `noiseEvery`-th is off in its last
// digit, within the tolerance; 0 for none.
Texts makeTexts(std::int64_t noiseEvery) {
  std::mt19937_64 random(7);
  std::uniform_int_distribution<std::int64_t> digits(100'000'000'000'000, 999'999'999'999'990);
  Texts texts;
  for (std::int64_t i = 0; i < 100'000; ++i) {
    const std::int64_t fraction = digits(random);
    const bool isNoisy = noiseEvery != 0 && i % noiseEvery == 0;
    texts.master += "3." + std::to_string(fraction) + ' ';
    texts.actual += "3." + std::to_string(fraction + (isNoisy ? 5 : 0)) + ' ';
  }
  return texts;
}

void compareNumbers(benchmark::State& state) {
  Texts texts = makeTexts(state.range(0));
  OrvDiffFloatComparison comparison;
  while (state.KeepRunning()) {
    const std::unique_ptr<OrvDiffResult> result(
        comparison.performStringDiff("master", "actual", texts.master.data(), texts.actual.data()));
    if (!result->isPassed()) state.SkipWithError("the texts do not pass");
  }
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(texts.master.size() + texts.actual.size()));
}
BENCHMARK(compareNumbers)->ArgName("noiseEvery")->Arg(0)->Arg(20)->Arg(3)->Arg(1);

}  // namespace

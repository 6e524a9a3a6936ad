#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchInputs.h"
#include "cli/custom/OwnEngines.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Rows of about 60 bytes. Two runs differ in a column that is ignored, in every `every`-th row,
/// and there in an amount, by a cent.
std::string makeTable(std::size_t size, unsigned run, unsigned every) {
  std::string text = "Id,Customer,Net,Tax,Printed\n";
  for (unsigned row = 1; text.size() < size; ++row) {
    const bool isOther = run > 1 && row % every == 0;
    text += std::to_string(row) + ",Customer number " + std::to_string(row * 7919 % 1000) + ',' +
            std::to_string(row % 9000) + (isOther ? ".51" : ".50") + ',' +
            std::to_string(row % 90) + ".19,2024-01-0" + (isOther ? '2' : '1') + "T10:11:12\n";
  }
  return text;
}

/// Pairs of tables of 20 KB that pass with the help of a tolerance and an ignored column, read from
/// files as a run reads them. `state.range(0)`: one row in how many differs; `range(1)`: whether
/// rows are told apart by a key.
void compareTables(benchmark::State& state) {
  constexpr std::size_t kPairs = 200;
  constexpr std::size_t kSize = 20'000;
  const auto every = static_cast<unsigned>(state.range(0));
  const TemporaryFolder folder;
  std::vector<std::pair<std::string, std::string>> pairs;
  for (std::size_t i = 0; i < kPairs; ++i) {
    const std::string name = std::to_string(i) + ".csv";
    pairs.emplace_back(folder.write("m/" + name, makeTable(kSize, 1, every)),
                       folder.write("o/" + name, makeTable(kSize, 2, every)));
  }
  CsvRules rules;
  rules.ignored = {"Printed"};
  rules.tolerance.absolute = 0.01;
  rules.keys = state.range(1) != 0 ? std::vector<std::string>{"Id"} : std::vector<std::string>();
  const OwnFormat format = {"invoices", "Invoices", "Invoices", "*.csv", rules, {}};
  const auto engine = createOwnEngine(format, nullptr);
  for (auto _ : state) {
    for (const auto& [master, output] : pairs) {
      const std::unique_ptr<OrvDiffResult> result(engine->performDiff(master, output, nullptr));
      if (!result->isPassed()) {
        state.SkipWithError("a pair does not pass");
      }
    }
  }
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(kPairs * 2 * kSize));  // both files
}
BENCHMARK(compareTables)
    ->ArgNames({"every", "keyed"})
    ->Args({1, 0})
    ->Args({10, 0})
    ->Args({100, 0})
    ->Args({10, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "bench/BenchInputs.h"
#include "orvdiff/orvdiff.h"

namespace {

class PassCounter : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass&) override { ++m_count; }
  std::int64_t count() const { return m_count; }

 private:
  std::int64_t m_count = 0;
};

/// A hundred reports, each verified in every format; they have one output each, a page of
/// `state.range(0)` bytes that differs from its master in its volatile parts.
void verifySuite(benchmark::State& state) {
  constexpr int kReports = 100;
  const auto size = static_cast<std::size_t>(state.range(0));
  const TemporaryFolder folder;
  for (int i = 0; i < kReports; ++i) {
    const std::string name = "Report" + std::to_string(100 + i) + ".html";
    folder.write("suite/Masters/" + name, makePage(size, 1));
    folder.write("webcontent/bi/v5DebugHTML/" + name, makePage(size, 2));
  }
  folder.write("work/readme", "");
  xercesc::XMLPlatformUtils::Initialize();
  std::filesystem::current_path(folder.path() / "work");
  std::vector<std::unique_ptr<OrvDiffFileEngine>> engines;
  OrvDiffEngineRegistry registry;
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    if (!format.needsArguments) {
      engines.push_back(format.createEngine({}));
      registry.registerDiffEngine(format.format, engines.back().get());
    }
  }
  PassCounter passes;
  registry.addListener(&passes);
  for (auto _ : state) {
    for (int i = 0; i < kReports; ++i) {
      const std::string report = "../suite/Report" + std::to_string(100 + i) + ".xml";
      for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
        registry.verifyOutput(format.format, report.c_str(), nullptr);
      }
    }
  }
  if (passes.count() != kReports * state.iterations()) {
    state.SkipWithError("not every report passed");
  }
  state.SetBytesProcessed(state.iterations() * kReports * 2 * state.range(0));
  engines.clear();
  xercesc::XMLPlatformUtils::Terminate();
  std::filesystem::current_path("/");
}
BENCHMARK(verifySuite)->ArgName("bytes")->Arg(1 << 10)->Arg(1 << 17)->Unit(benchmark::kMillisecond);

}  // namespace

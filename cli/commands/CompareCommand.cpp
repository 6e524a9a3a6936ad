#include <exception>
#include <memory>

#include "cli/commands/CommandLine.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/record/PairResult.h"
#include "cli/report/ResultPrinter.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/workers/LostPair.h"
#include "cli/workers/WorkerPool.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

struct CompareOptions : PairOptions {
  std::string format;
  LayoutDataOptions layoutData;
  double secondsPerPair = kSecondsPerPair;
};

/// The comparison, in a process of its own: engines may crash, and scripts hang.
class Comparison : public PoolWork {
 public:
  Comparison(const CompareOptions& options, OrvOutputFormat format, OrvDiffFileEngine& engine)
      : m_options(options), m_format(format), m_engine(engine) {
    m_pair.master = options.master;
    m_pair.output = options.actual;
  }

  const PairRecord& pair() const { return m_pair; }

 private:
  void perform(std::uint32_t /*task*/, std::uint64_t /*firstStep*/, WorkerLink& link) override {
    link.begin(0, {});
    PairResult result;
    result.record = compare();
    link.send(packPair(result));
  }
  void received(std::uint32_t /*task*/, std::string_view message) override {
    m_pair = unpackPair(message).record;
  }
  void lost(std::uint32_t /*task*/, std::string_view /*description*/,
            const WorkerLoss& loss) override {
    describeLoss(loss, m_options.secondsPerPair, m_pair);
  }
  void finished(std::uint32_t /*task*/) override {}

  PairRecord compare() {
    PairRecord pair = m_pair;
    OutputCapture capture;
    try {
      const OutputCapture::Session catching(capture, runsScript(m_engine));
      const std::unique_ptr<const OrvDiffResult> result(
          m_engine.performDiff(m_options.master, m_options.actual, nullptr));
      requireStartedScripts();
      pair = recordOf(*result, m_format);
    } catch (const std::exception& error) {
      pair.verdict = Verdict::Error;
      pair.message = causeOf(error, m_options.verbosity);
    }
    pair.printed = capture.take();
    return pair;
  }

  const CompareOptions& m_options;
  const OrvOutputFormat m_format;
  OrvDiffFileEngine& m_engine;
  PairRecord m_pair;
};

ExitStatus run(const CompareOptions& options) {
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, options.layoutData);
  const std::string problem = scriptProblem(*engine);
  if (!problem.empty()) {
    throw CommandError(problem);
  }
  Comparison comparison(options, format.format, *engine);
  WorkerPool pool(comparison, 1, {1, options.secondsPerPair, 0});
  const InterruptWatch watch;
  if (!pool.run(InterruptWatch::isStopWanted)) {
    return stopStatus().value_or(kExitTrouble);
  }
  const PairRecord& pair = comparison.pair();
  if (pair.verdict == Verdict::Error) {
    printForeign(pair.printed);
    throw CommandError(options.master + " -> " + options.actual + ": " + pair.message);
  }
  return printPair(pair, options);
}

}  // namespace

void addCompare(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<CompareOptions>(
      app, chosen, "compare", "Compare two files by the rules of a format", run);
  addFormat(verb, options.format);
  addPair(verb, options);
  addTimeout(verb, options.secondsPerPair);
  addLayoutData(verb, options.layoutData);
}

#include <exception>
#include <memory>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/diff/PairDiff.h"
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

struct DiffVerbOptions : PairOptions {
  DifferenceOptions differences;
  std::string format;
  LayoutDataOptions layoutData;
  ConfigChoice config;
  double secondsPerPair = kSecondsPerPair;
};

/// The result of an XML format may name the actual output only, so the files are those asked for.
void addDifference(const OrvDiffFormat& format, const OrvDiffFileEngine& engine,
                   const DiffVerbOptions& options, PairRecord& record) {
  PairRecord named = record;
  named.master = options.master;
  named.output = options.actual;
  record.difference = differenceOf(format, engine, named,
                                   {options.differences.maxHunks, 0, options.differences.context});
}

/// The comparison, in a process of its own: engines may crash, and scripts hang.
class Comparison : public PoolWork {
 public:
  Comparison(const DiffVerbOptions& options, const OrvDiffFormat& format, OrvDiffFileEngine& engine)
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
      pair = recordOf(*result, m_format.format);
    } catch (const std::exception& error) {
      pair.verdict = Verdict::Error;
      pair.message = causeOf(error, m_options.verbosity);
    }
    pair.printed = capture.take();
    if (m_options.verbosity != Verbosity::Quiet) {
      addDifference(m_format, m_engine, m_options, pair);
    }
    return pair;
  }

  const DiffVerbOptions& m_options;
  const OrvDiffFormat& m_format;
  OrvDiffFileEngine& m_engine;
  PairRecord m_pair;
};

ExitStatus run(const DiffVerbOptions& options) {
  const FormatOptions own =
      rulesForFiles(options.config, {options.master, options.actual}, options.verbosity);
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, options.layoutData, own.patterns);
  const std::string problem = scriptProblem(*engine);
  if (!problem.empty()) {
    throw CommandError(problem);
  }
  Comparison comparison(options, format, *engine);
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
  return printPair(pair, options, viewOf(options.differences));
}

}  // namespace

void addDiff(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<DiffVerbOptions>(
      app, chosen, "diff", "Compare two files by the rules of a format, and show how they differ",
      run);
  verb.alias("compare");
  addFormat(verb, options.format);
  addPair(verb, options);
  addTimeout(verb, options.secondsPerPair);
  addDifferences(verb, options.differences);
  addLayoutData(verb, options.layoutData);
  addConfig(verb, options.config);
}

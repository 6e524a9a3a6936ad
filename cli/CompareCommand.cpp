#include <exception>
#include <memory>

#include "cli/Commands.h"
#include "cli/ComparisonScript.h"
#include "cli/ErrorCause.h"
#include "cli/FormatSelection.h"
#include "cli/OutputCapture.h"
#include "cli/PairOutcome.h"
#include "cli/ResultPrinter.h"
#include "cli/Trouble.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

std::unique_ptr<const OrvDiffResult> comparePair(const CompareOptions& options,
                                                 OrvDiffFileEngine& engine,
                                                 OutputCapture& capture) {
  try {
    const OutputCapture::Session catching(capture, runsScript(engine));
    return std::unique_ptr<const OrvDiffResult>(
        engine.performDiff(options.master, options.actual, nullptr));
  } catch (const std::exception& error) {
    printForeign(capture.take());
    throw Trouble(options.master + " -> " + options.actual + ": " +
                  causeOf(error, options.verbosity));
  }
}

}  // namespace

ExitStatus run(const CompareOptions& options) {
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, options.layoutData);
  const std::string problem = scriptProblem(*engine);
  if (!problem.empty()) {
    throw Trouble(problem);
  }
  OutputCapture capture;
  const auto result = comparePair(options, *engine, capture);
  const Palette palette(options.color);
  ResultPrinter printer(options.verbosity, palette);
  printer.startFormat(format.format);
  printer.setEngineOutput(capture.take());
  return printPair(*result, printer);
}

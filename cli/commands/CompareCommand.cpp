#include <exception>
#include <memory>

#include "cli/commands/Commands.h"
#include "cli/commands/FileCommands.h"
#include "cli/report/ResultPrinter.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/CommandError.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

std::unique_ptr<const OrvDiffResult> comparePair(const CompareOptions& options,
                                                 OrvDiffFileEngine& engine,
                                                 OutputCapture& capture) {
  try {
    const OutputCapture::Session catching(capture, runsScript(engine));
    std::unique_ptr<const OrvDiffResult> result(
        engine.performDiff(options.master, options.actual, nullptr));
    requireStartedScripts();
    return result;
  } catch (const std::exception& error) {
    printForeign(capture.take());
    throw CommandError(options.master + " -> " + options.actual + ": " +
                       causeOf(error, options.verbosity));
  }
}

}  // namespace

ExitStatus run(const CompareOptions& options) {
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, options.layoutData);
  const std::string problem = scriptProblem(*engine);
  if (!problem.empty()) {
    throw CommandError(problem);
  }
  OutputCapture capture;
  const auto result = comparePair(options, *engine, capture);
  return printPair(*result, options, format.format, capture.take());
}

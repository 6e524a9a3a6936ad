#include <exception>
#include <memory>

#include "cli/commands/CommandLine.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/report/ResultPrinter.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/CommandError.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

struct CompareOptions : PairOptions {
  std::string format;
  LayoutDataOptions layoutData;
};

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

}  // namespace

void addCompare(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<CompareOptions>(
      app, chosen, "compare", "Compare two files by the rules of a format", run);
  addFormat(verb, options.format);
  addPair(verb, options);
  addLayoutData(verb, options.layoutData);
}

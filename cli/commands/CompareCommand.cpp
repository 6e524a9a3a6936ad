#include <exception>
#include <memory>

#include "cli/commands/CommandLine.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/diff/PairDiff.h"
#include "cli/report/ResultPrinter.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/CommandError.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

struct CompareOptions : PairOptions {
  DifferenceOptions differences;
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

/// The result of an XML format may name the actual output only, so the files are those asked for.
void addDifference(const OrvDiffFormat& format, const OrvDiffFileEngine& engine,
                   const CompareOptions& options, PairRecord& record) {
  PairRecord named = record;
  named.master = options.master;
  named.output = options.actual;
  record.difference = differenceOf(format, engine, named,
                                   {options.differences.maxHunks, 0, options.differences.context});
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
  PairRecord record = recordOf(*result, format.format);
  record.printed = capture.take();
  if (options.verbosity != Verbosity::Quiet) {
    addDifference(format, *engine, options, record);
  }
  return printPair(record, options, viewOf(options.differences));
}

}  // namespace

namespace {

void add(CLI::App& app, Performer& chosen, const char* name, const char* help) {
  const auto [verb, options] = addVerb<CompareOptions>(app, chosen, name, help, run);
  addFormat(verb, options.format);
  addPair(verb, options);
  addDifferences(verb, options.differences);
  addLayoutData(verb, options.layoutData);
}

}  // namespace

void addCompare(CLI::App& app, Performer& chosen) {
  add(app, chosen, "compare", "The same as diff");
}

void addDiff(CLI::App& app, Performer& chosen) {
  add(app, chosen, "diff", "Compare two files by the rules of a format, and show how they differ");
}

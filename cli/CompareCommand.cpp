#include <memory>

#include "cli/Commands.h"
#include "cli/FormatSelection.h"
#include "cli/ResultPrinter.h"
#include "orvdiff/registry/OrvDiffResult.h"

ExitStatus run(const CompareOptions& options) {
  const auto engine = createPairEngine(formatNamed(options.format));
  const std::unique_ptr<const OrvDiffResult> result(
      engine->performDiff(options.master, options.actual, nullptr));
  const Palette palette(options.color);
  ResultPrinter printer(options.verbosity, palette);
  result->notifyListener(printer);
  return result->isPassed() ? kExitPassed : kExitNotPassed;
}

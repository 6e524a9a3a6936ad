#include <exception>
#include <memory>

#include "cli/Commands.h"
#include "cli/FormatSelection.h"
#include "cli/PairOutcome.h"
#include "cli/Trouble.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

std::unique_ptr<const OrvDiffResult> comparePair(const CompareOptions& options) {
  const auto engine = createPairEngine(formatNamed(options.format), options.layoutData);
  try {
    return std::unique_ptr<const OrvDiffResult>(
        engine->performDiff(options.master, options.actual, nullptr));
  } catch (const std::exception& error) {
    throw Trouble(options.master + " -> " + options.actual + ": " + error.what());
  }
}

}  // namespace

ExitStatus run(const CompareOptions& options) {
  return printPair(*comparePair(options), options);
}

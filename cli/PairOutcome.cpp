#include "cli/PairOutcome.h"

#include "cli/ClosingSummary.h"
#include "cli/ResultPrinter.h"
#include "orvdiff/registry/OrvDiffResult.h"

ExitStatus printPair(const OrvDiffResult& result, const PairOptions& options) {
  const Palette palette(options.color);
  ResultPrinter printer(options.verbosity, palette);
  result.notifyListener(printer);
  RunTotals totals;
  result.notifyListener(totals.pairs);
  return exitStatusOf(totals, shortfallsOf(totals, false));
}

#include "cli/PairOutcome.h"

#include "cli/ClosingSummary.h"
#include "cli/ResultPrinter.h"
#include "orvdiff/registry/OrvDiffResult.h"

ExitStatus printPair(const OrvDiffResult& result, ResultPrinter& printer) {
  result.notifyListener(printer);
  RunTotals totals;
  result.notifyListener(totals.pairs);
  return exitStatusOf(totals, shortfallsOf(totals, false));
}

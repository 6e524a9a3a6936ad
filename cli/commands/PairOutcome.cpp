#include "cli/commands/PairOutcome.h"

#include "cli/report/ClosingSummary.h"
#include "cli/report/ResultPrinter.h"
#include "orvdiff/registry/OrvDiffResult.h"

ExitStatus printPair(const OrvDiffResult& result, ResultPrinter& printer) {
  result.notifyListener(printer);
  RunTotals totals;
  result.notifyListener(totals.pairs);
  return exitStatusOf(totals, shortfallsOf(totals, false));
}

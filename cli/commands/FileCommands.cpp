#include "cli/commands/FileCommands.h"

#include <cstdio>
#include <cstring>

#include "cli/report/ClosingSummary.h"
#include "cli/report/ResultPrinter.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"
#include "orvdiff/registry/OrvDiffResult.h"

InputText readText(const std::string& fileName, OrvFileHandle& file, Verbosity verbosity) {
  try {
    OrvTextBuffer text = OrvDiffLib::slurpFile(file);
    const auto size = static_cast<std::size_t>(std::ftell(file));
    const bool containsNul = std::strlen(text.get()) < size;
    return {std::move(text), containsNul};
  } catch (const VELThrowable& error) {
    throw CommandError(fileName + ": " + causeOf(error, verbosity));
  }
}

ExitStatus printPair(const OrvDiffResult& result, ResultPrinter& printer) {
  result.notifyListener(printer);
  RunTotals totals;
  result.notifyListener(totals.pairs);
  return exitStatusOf(totals, shortfallsOf(totals, false));
}

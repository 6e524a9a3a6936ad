#include "cli/commands/FileCommands.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include "cli/record/PairResult.h"
#include "cli/report/ClosingSummary.h"
#include "cli/report/ResultPrinter.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"

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

ExitStatus printPair(const OrvDiffResult& result, const PairOptions& options,
                     std::optional<OrvOutputFormat> format, std::string printed) {
  PairResult pair;
  describeResult(result, format, pair);
  PairRecord& record = pair.record;
  record.master = pair.resultMaster;
  record.output = pair.resultOutput;
  record.printed = std::move(printed);
  const Palette palette(options.color);
  ResultPrinter(options.verbosity, palette).print(record);
  RunTotals totals;
  totals.pairs.add(record);
  return exitStatusOf(totals, {});
}

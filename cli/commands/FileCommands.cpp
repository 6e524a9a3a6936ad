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

PairRecord recordOf(const OrvDiffResult& result, std::optional<OrvOutputFormat> format) {
  PairResult pair;
  describeResult(result, format, pair);
  pair.record.master = pair.resultMaster;
  pair.record.output = pair.resultOutput;
  return std::move(pair.record);
}

ExitStatus printPair(const PairRecord& pair, const CommonOptions& options) {
  const Palette palette(options.color);
  ResultPrinter(options.verbosity, palette).print(pair);
  RunTotals totals;
  totals.pairs.add(pair);
  return exitStatusOf(totals, {});
}

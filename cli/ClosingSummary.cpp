#include "cli/ClosingSummary.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "cli/Printable.h"

namespace {

std::string counted(std::size_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

void printUnverified(const std::vector<std::string>& reports, Verbosity verbosity) {
  constexpr std::size_t kMost = 20;
  const std::size_t shown =
      verbosity == Verbosity::Verbose ? reports.size() : std::min(kMost, reports.size());
  std::cout << "Not verified, no selected format has a master of:\n";
  for (std::size_t i = 0; i < shown; ++i) {
    std::cout << "    " << printable(reports[i]) << '\n';
  }
  if (shown < reports.size()) {
    std::cout << "    and " << reports.size() - shown << " more (-v names them all)\n";
  }
}

bool nothingFailed(const RunTotals& totals) {
  return totals.pairs.passed == totals.pairs.pairs() && totals.errors == 0;
}

void printCounts(const RunTotals& totals) {
  const Tally& pairs = totals.pairs;
  std::cout << counted(totals.done, "report") << ", " << counted(pairs.pairs(), "pair") << ": "
            << pairs.passed << " passed, " << pairs.differ << " differ, " << pairs.missing
            << " missing, " << pairs.failed << " failed, " << counted(totals.errors, "error");
  if (!totals.unverified.empty()) {
    std::cout << ", " << counted(totals.unverified.size(), "report") << " not verified";
  }
  std::cout << " (" << std::fixed << std::setprecision(2) << totals.time.count() << " s)\n";
}

}  // namespace

void printClosingSummary(const RunTotals& totals, Verbosity verbosity, const Palette& palette) {
  if (!totals.unverified.empty() && verbosity != Verbosity::Quiet) {
    printUnverified(totals.unverified, verbosity);
  }
  if (totals.interrupted) {
    std::cout << palette.paint(Color::Yellow, "Interrupted") << " in report " << totals.done
              << " of " << totals.reports << ". ";
  } else if (nothingFailed(totals)) {
    std::cout << (totals.pairs.pairs() > 0 ? palette.paint(Color::Green, "All passed.") + ' ' : "");
  } else {
    std::cout << palette.paint(Color::Red, "Not all passed.") << ' ';
  }
  printCounts(totals);
  std::cout.flush();
  for (const std::string& file : totals.unsaved) {
    std::cerr << "orvdiff: " << printable(file) << " could not be saved\n";
  }
}

ExitStatus exitStatusOf(const RunTotals& totals, bool allowNone) {
  if (totals.interrupted) {
    return kExitInterrupted;
  }
  if (totals.errors > 0 || !totals.unsaved.empty()) {
    return kExitTrouble;
  }
  if (totals.pairs.passed < totals.pairs.pairs()) {
    return kExitNotPassed;
  }
  return totals.pairs.pairs() > 0 || allowNone ? kExitPassed : kExitTrouble;
}

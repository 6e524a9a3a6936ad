#include "cli/report/ClosingSummary.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <utility>

#include "cli/system/Interrupt.h"
#include "cli/terminal/Printable.h"

namespace {

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

/// Verdicts that are so rare that only those that occur are counted out.
constexpr std::pair<Verdict, const char*> kRareVerdicts[] = {
    {Verdict::TimedOut, "timed out"},
    {Verdict::Crashed, "crashed"},
    {Verdict::Stale, "stale"},
    {Verdict::NotRun, "not run"},
};

void printCounts(const RunTotals& totals) {
  const Tally& pairs = totals.pairs;
  std::cout << counted(totals.done, "report") << ", " << counted(pairs.pairs(), "pair") << ": "
            << pairs.of(Verdict::Passed) << " passed, ";
  if (pairs.of(Verdict::Partly) > 0) {
    std::cout << pairs.of(Verdict::Partly) << " partly, ";
  }
  std::cout << pairs.of(Verdict::Differs) << " differ, " << pairs.of(Verdict::Missing)
            << " missing, " << pairs.of(Verdict::Failed) << " failed, "
            << counted(pairs.of(Verdict::Error), "error");
  for (const auto& [verdict, words] : kRareVerdicts) {
    if (pairs.of(verdict) > 0) {
      std::cout << ", " << pairs.of(verdict) << ' ' << words;
    }
  }
  if (!totals.unverified.empty()) {
    std::cout << ", " << counted(totals.unverified.size(), "report") << " not verified";
  }
  std::cout << " (" << std::fixed << std::setprecision(2) << totals.time.count() << " s)\n";
}

}  // namespace

std::string counted(std::size_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::vector<std::string> shortfallsOf(const RunTotals& totals, bool allowNone) {
  constexpr const char* kRemedy = " (--allow-none accepts that)";
  std::vector<std::string> shortfalls = totals.uncompared;
  if (!allowNone && !totals.interrupted) {
    for (const std::string& location : totals.emptyLocations) {
      shortfalls.push_back("no report in " + location + kRemedy);
    }
    // The pairs there are may belong to neighbours of the reports that were named.
    const bool noneOfTheirOwn = totals.done > 0 && totals.unverified.size() == totals.done;
    const bool nothingVerified = totals.pairs.pairs() == 0 || noneOfTheirOwn;
    if (shortfalls.empty() && nothingVerified && totals.pairs.of(Verdict::Error) == 0) {
      shortfalls.push_back(std::string("nothing to verify") + kRemedy);
    }
  }
  shortfalls.insert(shortfalls.end(), totals.incomplete.begin(), totals.incomplete.end());
  for (const std::string& file : totals.unsaved) {
    shortfalls.push_back(file + " could not be saved");
  }
  return shortfalls;
}

void printShortfalls(const std::vector<std::string>& shortfalls) {
  for (const std::string& shortfall : shortfalls) {
    std::cerr << "orvdiff: " << printable(shortfall) << '\n';
  }
}

void printClosingSummary(const RunTotals& totals, const std::vector<std::string>& shortfalls,
                         Verbosity verbosity, const Palette& palette) {
  if (!totals.unverified.empty() && verbosity != Verbosity::Quiet) {
    printUnverified(totals.unverified, verbosity);
  }
  if (totals.interrupted) {
    std::cout << palette.paint(Color::Yellow, "Interrupted") << " after " << totals.done << " of "
              << counted(totals.reports, "report") << ". ";
  } else if (!totals.pairs.allPassed()) {
    std::cout << palette.paint(Color::Red, "Not all passed.") << ' ';
  } else if (shortfalls.empty() && totals.pairs.pairs() > 0) {
    std::cout << palette.paint(Color::Green, "All passed.") << ' ';
  }
  printCounts(totals);
  std::cout.flush();
  printShortfalls(shortfalls);
}

ExitStatus exitStatusOf(const RunTotals& totals, const std::vector<std::string>& shortfalls) {
  if (totals.interrupted) {
    return stopStatus().value_or(kExitInterrupted);
  }
  if (totals.pairs.hasTrouble() || !shortfalls.empty()) {
    return kExitTrouble;
  }
  return totals.pairs.allPassed() ? kExitPassed : kExitNotPassed;
}

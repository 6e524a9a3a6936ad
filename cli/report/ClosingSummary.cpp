#include "cli/report/ClosingSummary.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <utility>

#include "cli/report/AccountPrinter.h"
#include "cli/system/Interrupt.h"
#include "cli/terminal/Printable.h"
#include "cli/terminal/Table.h"

namespace {

void printUnverified(const std::vector<std::string>& reports, Verbosity verbosity) {
  constexpr std::size_t kMost = 20;
  const std::size_t shown =
      verbosity == Verbosity::Verbose ? reports.size() : std::min(kMost, reports.size());
  std::cout << "Not verified (no master in any selected format):\n";
  for (std::size_t i = 0; i < shown; ++i) {
    std::cout << "    " << printable(reports[i]) << '\n';
  }
  if (shown < reports.size()) {
    std::cout << "    ... and " << reports.size() - shown << " more (-v lists all)\n";
  }
}

/// Most helpful first.
void printPassesByRule(const Tally& pairs) {
  std::vector<std::pair<std::size_t, std::string>> rules;
  for (const auto& [rule, passes] : pairs.passesByRule()) {
    rules.emplace_back(passes, rule);
  }
  std::sort(rules.begin(), rules.end(), [](const auto& left, const auto& right) {
    return left.first != right.first ? left.first > right.first : left.second < right.second;
  });
  Table table;
  for (const auto& [passes, rule] : rules) {
    table.add({"    " + printable(rule), std::to_string(passes)});
  }
  if (!rules.empty()) {
    std::cout << "Pairs that passed with the help of a rule:\n";
    table.print();
  }
}

/// Verdicts that are so rare that only those that occur are counted out.
constexpr std::pair<Verdict, const char*> kRareVerdicts[] = {
    {Verdict::Known, "known"}, {Verdict::TimedOut, "timed out"}, {Verdict::Crashed, "crashed"},
    {Verdict::Stale, "stale"}, {Verdict::NotRun, "not run"},
};

void printCounts(const RunTotals& totals) {
  const Tally& pairs = totals.pairs;
  std::cout << countOf(totals.done, "report") << ", " << countOf(pairs.pairs(), "pair") << ": "
            << pairs.of(Verdict::Passed) << " passed, ";
  if (pairs.of(Verdict::Partly) > 0) {
    std::cout << pairs.of(Verdict::Partly) << " partly, ";
  }
  std::cout << pairs.of(Verdict::Differs) << " differ, " << pairs.of(Verdict::Missing)
            << " missing, " << pairs.of(Verdict::Failed) << " failed, "
            << countOf(pairs.of(Verdict::Error), "error");
  for (const auto& [verdict, words] : kRareVerdicts) {
    if (pairs.of(verdict) > 0) {
      std::cout << ", " << pairs.of(verdict) << ' ' << words;
    }
  }
  if (!totals.unverified.empty()) {
    std::cout << ", " << countOf(totals.unverified.size(), "report") << " not verified";
  }
  if (const std::uint64_t count = countAccounted(totals.findings); count > 0) {
    std::cout << ", " << count << " not accounted for";
  }
  if (const std::size_t masks = pairs.outsizedMasks(); masks > 0) {
    std::cout << ", "
              << (masks == 1 ? "1 pass rests on an outsized mask"
                             : std::to_string(masks) + " passes rest on outsized masks");
  }
  std::cout << " (" << std::fixed << std::setprecision(2) << totals.time.count() << " s)\n";
}

/// What the suite's own file has to do with the result, so that it is not forgotten.
void printSuiteShare(const RunTotals& totals) {
  printKnown(totals.pairs);
  if (const std::size_t pairs = totals.pairs.passesBySuite(); pairs > 0) {
    std::cout << countOf(totals.pairs.suitePatternsUsed(), "suite pattern") << " helped "
              << countOf(pairs, "pair") << " to pass (-v names them)\n";
  }
  for (const std::string& remark : totals.remarks) {
    std::cout << printable(remark) << '\n';
  }
}

}  // namespace

void printKnown(const Tally& pairs) {
  for (const auto& [place, known] : pairs.knownByPlace()) {
    std::cout << "Known until " << printable(known.reason.until) << ": "
              << countOf(known.pairs, "pair") << ", " << printable(known.reason.why) << " ("
              << printable(place)
              << (known.reason.link.empty() ? "" : ", " + printable(known.reason.link)) << ")\n";
  }
}

std::vector<std::string> findProblems(const RunTotals& totals, bool allowNone) {
  constexpr const char* kRemedy = " (use --allow-none to accept this)";
  std::vector<std::string> problems = totals.uncompared;
  if (!allowNone && !totals.interrupted) {
    for (const std::string& location : totals.emptyLocations) {
      problems.push_back("no reports in " + location + kRemedy);
    }
    // The pairs there are may belong to neighbours of the reports that were named.
    const bool noneOfTheirOwn = totals.done > 0 && totals.unverified.size() == totals.done;
    const bool nothingVerified = totals.pairs.pairs() == 0 || noneOfTheirOwn;
    if (problems.empty() && nothingVerified && totals.pairs.of(Verdict::Error) == 0) {
      problems.push_back(std::string("nothing to verify") + kRemedy);
    }
  }
  problems.insert(problems.end(), totals.incomplete.begin(), totals.incomplete.end());
  for (const std::string& file : totals.unsaved) {
    problems.push_back(file + " could not be saved");
  }
  return problems;
}

void printProblems(const std::vector<std::string>& problems) {
  for (const std::string& problem : problems) {
    std::cerr << "orvdiff: " << printable(problem) << '\n';
  }
}

void printClosingSummary(const RunTotals& totals, const std::vector<std::string>& problems,
                         Verbosity verbosity, const Palette& palette) {
  if (!totals.unverified.empty() && verbosity != Verbosity::Quiet) {
    printUnverified(totals.unverified, verbosity);
  }
  if (verbosity != Verbosity::Quiet) {
    printAccount(totals.findings);
  }
  if (verbosity == Verbosity::Verbose) {
    printPassesByRule(totals.pairs);
  }
  if (verbosity != Verbosity::Quiet) {
    printSuiteShare(totals);
  }
  if (totals.interrupted) {
    std::cout << palette.paint(Color::Yellow, "Interrupted") << " after " << totals.done << " of "
              << countOf(totals.reports, "report") << ". ";
  } else if (totals.pairs.hasFailures()) {
    std::cout << palette.paint(Color::Red, "Not all passed.") << ' ';
  } else if (problems.empty() && totals.pairs.of(Verdict::Known) > 0) {
    std::cout << palette.paint(Color::Yellow, "All passed but what is known.") << ' ';
  } else if (problems.empty() && totals.pairs.pairs() > 0) {
    std::cout << (totals.findings.empty()
                      ? palette.paint(Color::Green, "All passed.")
                      : palette.paint(Color::Yellow, "Everything compared passed."))
              << ' ';
  }
  printCounts(totals);
  std::cout.flush();
  printProblems(problems);
}

ExitStatus exitStatusOf(const RunTotals& totals, const std::vector<std::string>& problems) {
  if (totals.interrupted) {
    return stopStatus().value_or(kExitInterrupted);
  }
  if (totals.pairs.hasTrouble() || !problems.empty()) {
    return kExitTrouble;
  }
  return totals.pairs.hasFailures() ? kExitNotPassed : kExitPassed;
}

#include "cli/commands/RecordSummary.h"

#include <iostream>
#include <string_view>

#include "cli/record/Verdict.h"
#include "cli/report/AccountPrinter.h"
#include "cli/terminal/Printable.h"

namespace {

std::uint64_t countOf(const RunRecord& run, Verdict verdict) {
  const auto found = run.totals.find(std::string(wordFor(verdict)));
  return found != run.totals.end() ? found->second : 0;
}

}  // namespace

void printRecordSummary(const RunRecord& run, const Palette& palette) {
  for (const std::string& report : run.unverified) {
    std::cout << "not verified  " << printable(report) << '\n';
  }
  printAccount(run.findings);
  for (const std::string& note : run.notes) {
    std::cout << printable(note) << '\n';
  }
  for (const std::string& remark : run.remarks) {
    std::cout << printable(remark) << '\n';
  }
  if (!run.complete) {
    std::cout << palette.paint(Color::Yellow, "Interrupted.") << ' ';
  } else if (countOf(run, Verdict::Passed) + countOf(run, Verdict::Known) != run.pairs ||
             run.status != 0) {
    std::cout << palette.paint(Color::Red, "Not all passed.") << ' ';
  } else if (countOf(run, Verdict::Known) > 0) {
    std::cout << palette.paint(Color::Yellow, "All passed but what is known.") << ' ';
  } else if (run.findings.empty()) {
    std::cout << palette.paint(Color::Green, "All passed.") << ' ';
  } else {
    std::cout << palette.paint(Color::Yellow, "Everything compared passed.") << ' ';
  }
  std::cout << "Run of " << printable(run.start) << " on " << printable(run.host) << ": "
            << countOf(run.reports, "report") << ", " << countOf(run.pairs, "pair");
  const char* separator = ": ";
  for (const auto& [word, count] : run.totals) {
    std::cout << separator << count << ' ' << printable(word);
    separator = ", ";
  }
  if (const std::uint64_t count = countAccounted(run.findings); count > 0) {
    std::cout << separator << count << " not accounted for";
  }
  std::cout << '\n';
}

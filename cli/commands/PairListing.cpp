#include "cli/commands/PairListing.h"

#include <iostream>
#include <string>

#include "cli/report/ClosingSummary.h"
#include "cli/suite/PairOwners.h"
#include "cli/terminal/Printable.h"

namespace {

/// Prints the pairs that `report` is compared for; returns how many.
std::size_t printPairs(const std::string& report, const RunPlan& plan,
                       const std::vector<SelectedFormat>& formats, const PairOwners& owners,
                       const SharedPictures* pictures) {
  std::size_t count = 0;
  for (const SelectedFormat& selected : formats) {
    for (const OrvFilePair& pair : findPairs(report, selected, plan.wanted())) {
      const std::string_view master = pair.master;
      if (owners.ownerOf(report, pair.master, *selected.engine) != PairOwners::Owner::Other &&
          (pictures == nullptr ||
           !pictures->isLeftToAnother(selected, master.substr(master.rfind('/') + 1)))) {
        std::cout << printable(report) << "  " << selected.format->name << "  "
                  << printable(pair.master) << " -> " << printable(pair.actual) << '\n';
        ++count;
      }
    }
  }
  if (count == 0) {
    std::cout << printable(report) << "  not verified: no selected format has a master\n";
  }
  return count;
}

}  // namespace

ExitStatus listPairs(const RunPlan& plan, const std::vector<SelectedFormat>& formats,
                     const SharedPictures* pictures, bool allowNone) {
  const PairOwners owners(plan.found.reports, plan.found.neighbours);
  RunTotals totals;
  totals.emptyLocations = plan.found.emptyLocations;
  totals.uncompared = plan.uncompared;
  std::size_t pairs = 0;
  for (const std::string& report : plan.reports) {
    pairs += printPairs(report, plan, formats, owners, pictures);
  }
  std::cout << countOf(plan.reports.size(), "report") << ", " << countOf(pairs, "pair") << '\n';
  std::vector<std::string> problems = findProblems(totals, allowNone || pairs > 0);
  printProblems(problems);
  return exitStatusOf(totals, problems);
}

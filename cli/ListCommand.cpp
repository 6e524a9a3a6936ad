#include "cli/ListCommand.h"

#include <iostream>

#include "cli/Printable.h"

namespace {

std::size_t listReport(const std::string& report, const std::vector<SelectedFormat>& formats) {
  std::size_t count = 0;
  for (const SelectedFormat& selected : formats) {
    for (const OrvFilePair& pair : selected.engine->findPairs(report)) {
      std::cout << printable(report) << "  " << selected.format->name << "  "
                << printable(pair.master) << " -> " << printable(pair.actual) << '\n';
      ++count;
    }
  }
  if (count == 0) {
    std::cout << printable(report) << "  not verified: no selected format has a master\n";
  }
  return count;
}

}  // namespace

ExitStatus listPairs(const std::vector<std::string>& reports,
                     const std::vector<SelectedFormat>& formats, bool allowNone) {
  std::size_t pairs = 0;
  for (const std::string& report : reports) {
    pairs += listReport(report, formats);
  }
  std::cout << reports.size() << " reports, " << pairs << " pairs\n";
  return pairs > 0 || allowNone ? kExitPassed : kExitTrouble;
}

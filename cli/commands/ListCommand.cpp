#include "cli/commands/ListCommand.h"

#include <iostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "cli/report/ClosingSummary.h"
#include "cli/suite/PairFilter.h"
#include "cli/terminal/Printable.h"

namespace {

struct ListedPair {
  std::string identity;
  std::string_view format;
  OrvFilePair files;
};

/// Finds the pairs of reports, and which report each counts for, as a run would.
class PairList {
 public:
  explicit PairList(const std::vector<SelectedFormat>& formats) : m_formats(formats) {}

  /// The pairs of `report`, which must outlive the list; some may count for another report.
  std::vector<ListedPair> add(const std::string& report) {
    const std::string_view stem = stemOf(report);
    std::vector<ListedPair> pairs;
    for (const SelectedFormat& selected : m_formats) {
      for (OrvFilePair& files : selected.engine->findPairs(report)) {
        std::string identity = identityOf(stem, selected.format->name, files.master);
        std::string_view& owner = m_owners[identity];
        owner = stem.size() > owner.size() ? stem : owner;
        pairs.push_back({std::move(identity), selected.format->name, std::move(files)});
      }
    }
    return pairs;
  }

  /// Prints those of `pairs` that count for `report` and were not printed before; returns how many.
  std::size_t print(const std::string& report, const std::vector<ListedPair>& pairs) {
    std::size_t count = 0;
    for (const ListedPair& pair : pairs) {
      if (m_owners[pair.identity] == stemOf(report) && m_printed.insert(pair.identity).second) {
        std::cout << printable(report) << "  " << pair.format << "  "
                  << printable(pair.files.master) << " -> " << printable(pair.files.actual) << '\n';
        m_listedStems.insert(stemOf(report));
        ++count;
      }
    }
    if (m_listedStems.count(stemOf(report)) == 0) {
      std::cout << printable(report) << "  not verified: no selected format has a master\n";
    }
    return count;
  }

 private:
  const std::vector<SelectedFormat>& m_formats;
  std::unordered_map<std::string, std::string_view> m_owners;  ///< stem by identity
  std::unordered_set<std::string_view> m_printed;
  std::unordered_set<std::string_view> m_listedStems;
};

}  // namespace

ExitStatus listPairs(const FoundReports& found, const std::vector<SelectedFormat>& formats,
                     bool allowNone) {
  PairList list(formats);
  for (const std::string& neighbour : found.neighbours) {
    list.add(neighbour);
  }
  std::vector<std::vector<ListedPair>> pairs;
  for (const std::string& report : found.reports) {
    pairs.push_back(list.add(report));
  }
  RunTotals totals;
  totals.emptyLocations = found.emptyLocations;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    totals.pairs.passed += list.print(found.reports[i], pairs[i]);
  }
  std::cout << counted(pairs.size(), "report") << ", " << counted(totals.pairs.passed, "pair")
            << '\n';
  const std::vector<std::string> shortfalls = shortfallsOf(totals, allowNone);
  printShortfalls(shortfalls);
  return exitStatusOf(totals, shortfalls);
}

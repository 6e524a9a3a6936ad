#include "cli/content/TableColumns.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace {

using Names = std::vector<std::string>;

bool isLikeNumber(const std::string& cell) {
  const std::size_t first = cell.find_first_not_of("+-.,( ");
  return first == std::string::npos || (cell[first] >= '0' && cell[first] <= '9');
}

bool isHeader(const Names& cells) {
  constexpr std::size_t kMostNames = 10'000;
  constexpr std::size_t kLongestName = 200;
  return cells.size() <= kMostNames &&
         std::set<std::string>(cells.begin(), cells.end()).size() == cells.size() &&
         std::none_of(cells.begin(), cells.end(), [](const std::string& cell) {
           return cell.empty() || cell.size() > kLongestName || isLikeNumber(cell);
         });
}

/// The names in `names` that `others` has not.
std::vector<std::size_t> missingIn(const Names& others, const Names& names) {
  const std::set<std::string> known(others.begin(), others.end());
  std::vector<std::size_t> missing;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (known.count(names[i]) == 0) {
      missing.push_back(i);
    }
  }
  return missing;
}

void matchByName(TableColumns& columns) {
  columns.onlyInMaster = missingIn(columns.outputNames, columns.masterNames);
  columns.onlyInOutput = missingIn(columns.masterNames, columns.outputNames);
  std::unordered_map<std::string, std::size_t> inOutput;
  for (std::size_t i = 0; i < columns.outputNames.size(); ++i) {
    inOutput.emplace(columns.outputNames[i], i);
  }
  if (columns.onlyInMaster.size() == columns.onlyInOutput.size()) {  // renamed
    for (std::size_t i = 0; i < columns.onlyInMaster.size(); ++i) {
      inOutput.emplace(columns.masterNames[columns.onlyInMaster[i]], columns.onlyInOutput[i]);
    }
    columns.onlyInMaster.clear();
    columns.onlyInOutput.clear();
  }
  std::size_t last = 0;
  for (std::size_t i = 0; i < columns.masterNames.size(); ++i) {
    const auto match = inOutput.find(columns.masterNames[i]);
    if (match != inOutput.end()) {
      columns.pairs.push_back({i, match->second});
      columns.isReordered = columns.isReordered || match->second < last;
      last = match->second;
    }
  }
}

}  // namespace

std::vector<ColumnPair> TableColumns::pairsUpTo(std::size_t count) const {
  std::vector<ColumnPair> all = pairs;
  std::size_t master = isMatched() ? masterNames.size() : 0;
  std::size_t output = isMatched() ? outputNames.size() : 0;
  while (master < count || output < count) {
    all.push_back({master++, output++});
  }
  return all;
}

TableColumns matchColumns(const CsvTable& master, const CsvTable& output) {
  TableColumns columns;
  if (master.size() == 0 || output.size() == 0) {
    return columns;
  }
  columns.masterNames = master.cells(0);
  columns.outputNames = output.cells(0);
  columns.hasHeader = master.size() > 1 && output.size() > 1 && isHeader(columns.masterNames) &&
                      isHeader(columns.outputNames);
  // Looking for every name in every row must not cost more than reading the cells, which rows of
  // fewer cells than names have not.
  constexpr std::size_t kMostLookups = 50'000'000;
  const bool isCheap = columns.masterNames.size() * master.size() <= kMostLookups &&
                       columns.outputNames.size() * output.size() <= kMostLookups;
  if (columns.hasHeader && columns.masterNames != columns.outputNames && isCheap) {
    matchByName(columns);
  }
  return columns;
}

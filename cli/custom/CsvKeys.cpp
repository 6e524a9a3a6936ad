#include "cli/custom/CsvKeys.h"

#include <algorithm>
#include <unordered_map>

#include "cli/terminal/Counts.h"

namespace {

using Cells = std::vector<std::string>;
using RowOfKey = std::unordered_map<std::string, std::uint32_t>;

/// The values of the key columns; different for different values.
std::string keyOf(const Cells& cells, const CsvColumns& columns) {
  std::string key;
  for (const std::size_t column : columns.keys()) {
    key += column < cells.size() ? std::to_string(cells[column].size()) + ':' + cells[column] : "-";
  }
  return key;
}

/// "two rows with Invoice \"17\", in lines 3 and 9".
std::string duplicateText(const CsvTable& table, std::uint32_t first, std::uint32_t second,
                          const CsvColumns& columns) {
  const Cells cells = table.cells(second);
  std::string text = "has two rows with ";
  for (const std::size_t column : columns.keys()) {
    text += (column == columns.keys().front() ? "" : ", ") + columns.at(column).name + " \"" +
            (column < cells.size() ? cells[column] : "") + '"';
  }
  return text + ", in lines " + withThousands(table.lineOf(first)) + " and " +
         withThousands(table.lineOf(second));
}

}  // namespace

KeyedRows pairByKeys(const CsvTable& master, const CsvTable& output, const CsvColumns& columns) {
  KeyedRows rows;
  RowOfKey inOutput;
  for (std::uint32_t row = 1; row < output.size(); ++row) {
    const auto [entry, isNew] = inOutput.try_emplace(keyOf(output.cells(row), columns), row);
    if (!isNew) {
      rows.outputProblem = rows.outputProblem.empty()
                               ? duplicateText(output, entry->second, row, columns)
                               : rows.outputProblem;
    }
  }
  std::vector<bool> isPaired(output.size());
  RowOfKey inMaster;
  for (std::uint32_t row = 1; row < master.size(); ++row) {
    std::string key = keyOf(master.cells(row), columns);
    const auto match = inOutput.find(key);
    const auto [entry, isNew] = inMaster.try_emplace(std::move(key), row);
    if (!isNew) {
      rows.masterProblem = rows.masterProblem.empty()
                               ? duplicateText(master, entry->second, row, columns)
                               : rows.masterProblem;
    }
    if (!isNew || match == inOutput.end()) {
      rows.onlyInMaster.push_back(row);
      continue;
    }
    rows.isReordered =
        rows.isReordered || (!rows.pairs.empty() && match->second < rows.pairs.back().second);
    rows.pairs.emplace_back(row, match->second);
    isPaired[match->second] = true;
  }
  for (std::uint32_t row = 1; row < output.size(); ++row) {
    if (!isPaired[row]) {
      rows.onlyInOutput.push_back(row);
    }
  }
  return rows;
}

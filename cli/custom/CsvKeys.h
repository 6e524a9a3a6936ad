#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/content/CsvTable.h"
#include "cli/custom/CsvColumns.h"

/// The rows of two tables, headers aside, by the values of their key columns.
struct KeyedRows {
  /// Of the master and the output, in the order of the master.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
  std::vector<std::uint32_t> onlyInMaster;
  std::vector<std::uint32_t> onlyInOutput;  ///< including all but the first row of the same key
  bool isReordered = false;
  std::string masterProblem;  ///< that two rows have the same key; empty: none have
  std::string outputProblem;
};

/// Pairs the rows of whole tables with a header; a cell that a row has not is a key of its own.
KeyedRows pairByKeys(const CsvTable& master, const CsvTable& output, const CsvColumns& columns);

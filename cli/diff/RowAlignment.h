#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "cli/content/CsvTable.h"
#include "cli/content/TableColumns.h"
#include "cli/diff/SequenceDiff.h"

/// A row of the master and one of the output, counted from 0.
struct RowPair {
  std::uint32_t master;
  std::uint32_t output;
};

/// Which rows of two tables belong together. Equal rows in equal order are not mentioned.
struct RowAlignment {
  std::vector<RowPair> pairs;  ///< rows that have changed
  std::vector<RowPair> moves;  ///< equal rows that are in another place
  std::vector<std::pair<std::uint32_t, std::uint32_t>> removed;  ///< [begin, end) in the master
  std::vector<std::pair<std::uint32_t, std::uint32_t>> added;    ///< the same in the output
  bool isOnlyMoved = false;        ///< the same rows, each as often, in another order
  bool isCoarse = false;           ///< the tables were too long or too different to be sure
  std::vector<SequenceEdit> gaps;  ///< between equal rows in equal order
};

/// Aligns rows: equal ones first, then those that have most cells in common.
RowAlignment alignRows(const CsvTable& master, const CsvTable& output, const TableColumns& columns);

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/content/CsvTable.h"

/// A column of the master and the one of the output that it is compared with.
struct ColumnPair {
  std::size_t master;
  std::size_t output;
};

/// Which columns of two tables are compared.
struct TableColumns {
  bool hasHeader = false;                ///< both tables start with the names of their columns
  std::vector<std::string> masterNames;  ///< the first rows, header or not
  std::vector<std::string> outputNames;
  std::vector<ColumnPair> pairs;  ///< by name; none if every column stands in its place
  std::vector<std::size_t> onlyInMaster;
  std::vector<std::size_t> onlyInOutput;
  bool isReordered = false;

  /// Whether columns were matched by their names, and not by their places.
  bool isMatched() const { return !pairs.empty(); }
  /// The pairs for rows of up to `count` cells: `pairs`, then those without a name, in order.
  std::vector<ColumnPair> pairsUpTo(std::size_t count) const;
};

/// Matches columns by their names, if both tables have a header and no name occurs twice. Columns
/// that have changed their names are matched by their place, if as many names are new as are gone.
TableColumns matchColumns(const CsvTable& master, const CsvTable& output);

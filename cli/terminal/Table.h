#pragma once

#include <string>
#include <utility>
#include <vector>

/// Aligned columns: the first is text, the others are numbers.
class Table {
 public:
  using Row = std::vector<std::string>;

  /// Adds a row. `below`, unless empty, is printed indented
  /// below it.
  void add(Row row, std::string below = {});

  /// Prints everything on `std::cout`.
  void print() const;

 private:
  std::vector<std::pair<Row, std::string>> m_rows;
  std::vector<std::size_t> m_widths;  ///< in columns
};

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/custom/OwnFormat.h"

/// How the cells of one column are compared.
struct CsvColumn {
  std::string name;  ///< as messages call it
  bool isIgnored = false;
  Tolerance tolerance;
};

/// The rules of a format, applied to the header of a file.
class CsvColumns {
 public:
  /// `header` is empty if the rules name no columns. Problems are for `problem`.
  CsvColumns(const CsvRules& rules, const std::vector<std::string>& header);

  /// Whether `rules` need a header.
  static bool needHeader(const CsvRules& rules);

  /// Why the rules cannot be applied to this header, to be printed after the file's name; empty:
  /// they can.
  const std::string& problem() const { return m_problem; }

  /// The column at `index`, which may be beyond the header.
  const CsvColumn& at(std::size_t index) const {
    return index < m_columns.size() ? m_columns[index] : m_unnamed;
  }
  std::size_t size() const { return m_columns.size(); }
  const std::vector<std::size_t>& keys() const { return m_keys; }

 private:
  std::size_t find(const std::vector<std::string>& header, const std::string& name,
                   const char* purpose);

  std::vector<CsvColumn> m_columns;
  CsvColumn m_unnamed;
  std::vector<std::size_t> m_keys;
  std::string m_problem;
};

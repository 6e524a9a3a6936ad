#include "cli/custom/CsvColumns.h"

#include <algorithm>

bool CsvColumns::needHeader(const CsvRules& rules) {
  return !rules.ignored.empty() || !rules.keys.empty() || !rules.ofColumn.empty();
}

CsvColumns::CsvColumns(const CsvRules& rules, const std::vector<std::string>& header) {
  m_unnamed.tolerance = rules.tolerance;
  for (const std::string& name : header) {
    m_columns.push_back({name, false, rules.tolerance});
  }
  m_columns.emplace_back();  // takes what is said of columns that are not there
  for (const std::string& name : rules.ignored) {
    m_columns[find(header, name, "is to be ignored")].isIgnored = true;
  }
  for (const auto& [name, tolerance] : rules.ofColumn) {
    m_columns[find(header, name, "has a tolerance of its own")].tolerance = tolerance;
  }
  for (const std::string& name : rules.keys) {
    m_keys.push_back(find(header, name, "is a key"));
    m_columns[m_keys.back()].tolerance = {};
  }
  m_columns.pop_back();
}

/// The only column called `name`; the number of columns, and a problem, if there is not just one.
std::size_t CsvColumns::find(const std::vector<std::string>& header, const std::string& name,
                             const char* purpose) {
  const auto count = std::count(header.begin(), header.end(), name);
  if (count != 1 && m_problem.empty()) {
    m_problem = (count == 0 ? "has no column \"" : "has several columns \"") + name + "\", which " +
                purpose;
  }
  return count == 1 ? static_cast<std::size_t>(std::find(header.begin(), header.end(), name) -
                                               header.begin())
                    : header.size();
}

#include "cli/terminal/Table.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr const char* kGap = "  ";
constexpr const char* kIndent = "    ";

}  // namespace

void Table::add(Row row, std::string below) {
  m_widths.resize(std::max(m_widths.size(), row.size()));
  for (std::size_t i = 0; i < row.size(); ++i) {
    m_widths[i] = std::max(m_widths[i], row[i].size());
  }
  m_rows.emplace_back(std::move(row), std::move(below));
}

void Table::print() const {
  for (const auto& [row, below] : m_rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string fill(m_widths[i] - row[i].size(), ' ');
      std::cout << (i == 0 ? row[i] + fill : kGap + fill + row[i]);
    }
    std::cout << '\n';
    if (!below.empty()) {
      std::cout << kIndent << below << '\n';
    }
  }
}

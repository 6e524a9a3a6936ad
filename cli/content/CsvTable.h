#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A file of separated values, split into rows; cells are split off when somebody asks.
///
/// Cells may be quoted, and then contain separators, line breaks and doubled quotes. Rows may have
/// different numbers of cells. Every text is a table: a quote that is never closed makes all quotes
/// of the text plain characters.
class CsvTable {
 public:
  static constexpr std::size_t kMostRows = 4'000'000;
  static constexpr std::size_t kLongestRow = std::size_t{8} << 20;  ///< in bytes

  /// Finds out the separator from the first rows. `text` must outlive the table.
  explicit CsvTable(std::string_view text);

  /// False when there are more rows, or longer ones, than a table may have; it ends before them.
  bool isWhole() const { return m_isWhole; }
  bool hasOpenQuote() const { return !m_quotesCount; }
  char separator() const { return m_separator; }
  std::size_t size() const { return m_rows.size(); }

  /// A row as it is in the file, without its line end.
  std::string_view rawRow(std::size_t row) const;
  /// The line, counted from 1, in which a row starts.
  std::uint64_t lineOf(std::size_t row) const { return m_rows[row].line; }
  /// The values of a row's cells.
  std::vector<std::string> cells(std::size_t row) const;

  /// A hash of the cells of a row: those of `columns` in that order, then all from the number
  /// `rest` on.
  std::uint64_t hash(std::size_t row, const std::vector<std::size_t>& columns,
                     std::size_t rest) const;

 private:
  struct Row {
    std::uint64_t begin;
    std::uint32_t length;
    std::uint32_t line;
  };

  bool splitRows();
  std::size_t endOfCell(std::size_t begin, std::size_t end) const;
  bool isLineEnd(std::size_t position) const;
  template <typename Visitor>
  void visitCells(std::size_t row, const Visitor& visit) const;

  std::string_view m_text;
  std::vector<Row> m_rows;
  char m_separator = ',';
  bool m_quotesCount = true;
  bool m_isWhole = true;
};

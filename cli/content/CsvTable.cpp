#include "cli/content/CsvTable.h"

#include <xxhash.h>

#include <algorithm>
#include <array>

namespace {

/// How many of the first rows have as many separators as the very first, which has some.
std::size_t likeness(std::string_view text, char separator) {
  constexpr std::size_t kRowsToSee = 100;
  constexpr std::size_t kBytesToSee = std::size_t{1} << 18;
  std::size_t inFirst = 0;
  std::size_t inThis = 0;
  std::size_t rows = 0;
  std::size_t alike = 0;
  bool isQuoted = false;
  const std::string_view start = text.substr(0, kBytesToSee);
  for (std::size_t i = 0; i <= start.size() && rows < kRowsToSee; ++i) {
    if (i == start.size() || (start[i] == '\n' && !isQuoted)) {
      inFirst = rows == 0 ? inThis : inFirst;
      alike += inThis == inFirst ? 1 : 0;
      ++rows;
      inThis = 0;
    } else if (start[i] == '"') {
      isQuoted = !isQuoted;
    } else if (start[i] == separator && !isQuoted) {
      ++inThis;
    }
  }
  return inFirst == 0 ? 0 : alike;
}

char detectSeparator(std::string_view text) {
  constexpr std::array<char, 4> kSeparators = {',', ';', '\t', '|'};
  char best = ',';
  std::size_t most = 0;
  for (const char separator : kSeparators) {
    const std::size_t alike = likeness(text, separator);
    if (alike > most) {
      most = alike;
      best = separator;
    }
  }
  return best;
}

std::uint64_t combine(std::uint64_t hash, std::uint64_t next) {
  const std::array<std::uint64_t, 2> both = {hash, next};
  return XXH3_64bits(both.data(), sizeof both);
}

}  // namespace

CsvTable::CsvTable(std::string_view text)
    : CsvTable(text, detectSeparator(CsvGrammar::withoutByteOrderMark(text))) {}

CsvTable::CsvTable(std::string_view text, char separator)
    : m_text(CsvGrammar::withoutByteOrderMark(text)), m_grammar{separator, true} {
  if (!splitRows()) {
    m_grammar.quotesCount = false;
    splitRows();
  }
}

/// False when a quote is not closed.
bool CsvTable::splitRows() {
  m_rows.clear();
  m_isWhole = true;
  std::uint32_t line = 1;
  for (std::size_t begin = 0; begin < m_text.size();) {
    std::size_t end = m_grammar.endOfCell(m_text, begin);
    while (end < m_text.size() && m_text[end] == separator()) {
      end = m_grammar.endOfCell(m_text, end + 1);
    }
    if (end == std::string_view::npos) {
      return false;
    }
    if (m_rows.size() == kMostRows || end - begin > kLongestRow) {
      m_isWhole = false;
      break;
    }
    m_rows.push_back({begin, static_cast<std::uint32_t>(end - begin), line});
    const std::string_view row = m_text.substr(begin, end - begin);
    line += 1 + static_cast<std::uint32_t>(std::count(row.begin(), row.end(), '\n'));
    begin = end < m_text.size() ? CsvGrammar::nextLine(m_text, end) : end;
  }
  return true;
}

std::string_view CsvTable::rawRow(std::size_t row) const {
  return m_text.substr(m_rows[row].begin, m_rows[row].length);
}

/// Calls `visit` with each cell's value. What it gets does not outlive the call.
template <typename Visitor>
void CsvTable::visitCells(std::size_t row, const Visitor& visit) const {
  const std::string_view text = rawRow(row);
  std::string unquoted;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(m_grammar.endOfCell(text, begin), text.size());
    visit(m_grammar.valueOf(text.substr(begin, end - begin), unquoted));
    begin = end + 1;
  }
}

std::vector<std::string> CsvTable::cells(std::size_t row) const {
  std::vector<std::string> values;
  visitCells(row, [&values](std::string_view cell) { values.emplace_back(cell); });
  return values;
}

std::uint64_t CsvTable::hash(std::size_t row, const std::vector<std::size_t>& columns,
                             std::size_t rest) const {
  std::vector<std::uint64_t> hashes;
  std::uint64_t hashOfRest = 0;
  visitCells(row, [&](std::string_view cell) {
    const std::uint64_t hash = XXH3_64bits(cell.data(), cell.size());
    if (hashes.size() < rest) {
      hashes.push_back(hash);
    } else {
      hashOfRest = combine(hashOfRest, hash);
    }
  });
  std::uint64_t hash = hashOfRest;
  for (const std::size_t column : columns) {
    hash = combine(hash, column < hashes.size() ? hashes[column] : 0);
  }
  return hash;
}

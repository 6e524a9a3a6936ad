#include "cli/content/CsvTable.h"

#include <xxhash.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

CsvTable::CsvTable(std::string_view text) : m_text(text) {
  if (m_text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    m_text.remove_prefix(kByteOrderMark.size());
  }
  m_separator = detectSeparator(m_text);
  if (!splitRows()) {
    m_quotesCount = false;
    splitRows();
  }
}

bool CsvTable::isLineEnd(std::size_t position) const {
  return m_text[position] == '\n' ||
         (m_text[position] == '\r' && position + 1 < m_text.size() && m_text[position + 1] == '\n');
}

/// Where the cell that starts at `begin` ends, at `end` at the latest; `npos` when it is quoted and
/// its quote is not closed.
std::size_t CsvTable::endOfCell(std::size_t begin, std::size_t end) const {
  std::size_t at = begin;
  if (m_quotesCount && at < end && m_text[at] == '"') {
    for (++at;; at += 2) {
      at = m_text.find('"', at);
      if (at >= end) {
        return std::string_view::npos;
      }
      if (at + 1 == end || m_text[at + 1] != '"') {
        ++at;
        break;
      }
    }
  }
  while (at < end && m_text[at] != m_separator && !isLineEnd(at)) {
    ++at;
  }
  return at;
}

/// False when a quote is not closed.
bool CsvTable::splitRows() {
  m_rows.clear();
  m_isWhole = true;
  std::uint32_t line = 1;
  for (std::size_t begin = 0; begin < m_text.size();) {
    std::size_t end = endOfCell(begin, m_text.size());
    while (end < m_text.size() && m_text[end] == m_separator) {
      end = endOfCell(end + 1, m_text.size());
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
    begin = end + (end < m_text.size() && m_text[end] == '\r' ? 2 : 1);
  }
  return true;
}

std::string_view CsvTable::rawRow(std::size_t row) const {
  return m_text.substr(m_rows[row].begin, m_rows[row].length);
}

/// Calls `visit` with each cell's value. What it gets does not outlive the call.
template <typename Visitor>
void CsvTable::visitCells(std::size_t row, const Visitor& visit) const {
  const std::size_t end = m_rows[row].begin + m_rows[row].length;
  std::string unquoted;
  for (std::size_t begin = m_rows[row].begin; begin <= end;) {
    const std::size_t stop = std::min(endOfCell(begin, end), end);
    std::string_view cell = m_text.substr(begin, stop - begin);
    if (m_quotesCount && !cell.empty() && cell.front() == '"') {
      unquoted.clear();
      bool isQuoted = true;
      for (std::size_t i = 1; i < cell.size(); ++i) {
        if (!isQuoted || cell[i] != '"') {
          unquoted += cell[i];
        } else if (i + 1 < cell.size() && cell[i + 1] == '"') {
          unquoted += cell[i++];
        } else {
          isQuoted = false;
        }
      }
      cell = unquoted;
    }
    visit(cell);
    begin = stop + 1;
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

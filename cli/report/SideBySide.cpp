#include "cli/report/SideBySide.h"

#include <algorithm>
#include <iterator>

#include "cli/report/DiffCells.h"
#include "cli/terminal/Printable.h"

namespace {

using Kind = DiffLine::Kind;

constexpr std::size_t kLeastColumns = 16;
constexpr const char* kSeparator = " \u2502 ";
constexpr std::size_t kSeparatorColumns = 3;

std::size_t digitsOf(std::uint64_t number) {
  return number == 0 ? 0 : std::to_string(number).size();
}

std::string gutterOf(std::uint64_t number, std::size_t digits, Kind kind) {
  const std::string text = number == 0 ? "" : std::to_string(number);
  const char* const sign = kind == Kind::Removed ? " - " : kind == Kind::Added ? " + " : "   ";
  return std::string(digits - text.size(), ' ') + text + sign;
}

std::size_t columnsOf(const DiffCells& cells, std::size_t begin, std::size_t end) {
  std::size_t columns = 0;
  for (std::size_t i = begin; i < end; ++i) {
    columns += cells[i].columns;
  }
  return columns;
}

}  // namespace

/// Lines that stand beside each other.
struct SideBySide::Block {
  Rows left;
  Rows right;
};

SideBySide::SideBySide(std::size_t width, bool showsMasks, const Palette& palette)
    : m_columns(
          std::max(kLeastColumns, (std::max(width, kSeparatorColumns) - kSeparatorColumns) / 2)),
      m_showsMasks(showsMasks),
      m_palette(palette) {}

SideBySide::Rows SideBySide::rowsOf(const DiffLine& line, std::uint64_t number,
                                    std::size_t digits) const {
  const std::string gutter = gutterOf(number, digits, line.kind);
  const std::string blanks(gutter.size(), ' ');
  const std::size_t width = m_columns - std::min(m_columns - 1, gutter.size());
  DiffCells cells = cellsOf(line, m_showsMasks);
  if (line.kind == Kind::Context) {
    clip(cells, width);
  }
  Rows rows;
  std::size_t begin = 0;
  do {
    const std::size_t end = endOfRow(cells, begin, width);
    rows.emplace_back(
        (begin == 0 ? gutter : blanks) + paintedRow(cells, begin, end, line.kind, m_palette),
        gutter.size() + columnsOf(cells, begin, end));
    const std::string marks = m_palette.isColored() ? "" : marksBelow(cells, begin, end);
    if (!marks.empty()) {
      rows.emplace_back(blanks + marks, blanks.size() + marks.size());
    }
    begin = end;
  } while (begin < cells.size());
  if (line.omitted > 0) {
    const std::string words = ' ' + countOf(line.omitted, "more line");
    rows.emplace_back(blanks + m_palette.paint(Color::Dim, kCutSign + words),
                      blanks.size() + 1 + words.size());
  }
  return rows;
}

void SideBySide::print(const Block& block, std::ostream& out) const {
  for (std::size_t i = 0; i < std::max(block.left.size(), block.right.size()); ++i) {
    std::size_t columns = 0;
    if (i < block.left.size()) {
      out << block.left[i].first;
      columns = block.left[i].second;
    }
    out << std::string(m_columns - std::min(m_columns, columns), ' ') << kSeparator
        << (i < block.right.size() ? block.right[i].first : "") << '\n';
  }
}

void SideBySide::print(const DiffHunk& hunk, std::ostream& out) const {
  if (!hunk.place.empty()) {
    out << printable(hunk.place) << '\n';
  }
  std::size_t digits = 0;
  for (const DiffLine& line : hunk.lines) {
    digits = std::max({digits, digitsOf(line.masterLine), digitsOf(line.outputLine)});
  }
  Block block;
  const auto append = [](Rows& to, Rows rows) {
    to.insert(to.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
  };
  for (const DiffLine& line : hunk.lines) {
    const bool isNext = line.kind != Kind::Added && !block.right.empty();
    if (isNext || line.kind == Kind::Context) {
      print(block, out);
      block = {};
    }
    if (line.kind != Kind::Added) {
      append(block.left, rowsOf(line, line.masterLine, digits));
    }
    if (line.kind != Kind::Removed) {
      append(block.right, rowsOf(line, line.outputLine, digits));
    }
  }
  print(block, out);
}

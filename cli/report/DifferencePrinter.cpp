#include "cli/report/DifferencePrinter.h"

#include <algorithm>

#include "cli/report/DiffCells.h"
#include "cli/terminal/Printable.h"

namespace {

using Kind = DiffLine::Kind;

constexpr std::size_t kUsualWidth = 100;
constexpr std::size_t kNarrow = 50;    // narrower: no indent, and one number a line
constexpr std::size_t kLeastText = 8;  // columns for the text, however narrow the terminal is
std::string rightAligned(std::uint64_t number, std::size_t width) {
  const std::string digits = number == 0 ? "" : std::to_string(number);
  return std::string(width - std::min(width, digits.size()), ' ') + digits;
}

char signOf(Kind kind) {
  return kind == Kind::Removed ? '-' : kind == Kind::Added ? '+' : ' ';
}

std::size_t widthFor(const DifferenceView& view) {
  return view.width != 0 ? view.width : outputWidth().value_or(kUsualWidth);
}

}  // namespace

/// What precedes the text of each row of a hunk.
struct DifferencePrinter::Gutter {
  std::size_t masterDigits = 0;
  std::size_t outputDigits = 0;
  bool hasOneNumber = false;

  Gutter(const DiffHunk& hunk, bool isNarrow) : hasOneNumber(isNarrow) {
    for (const DiffLine& line : hunk.lines) {
      masterDigits = std::max(masterDigits, digits(line.masterLine));
      outputDigits = std::max(outputDigits, digits(line.outputLine));
    }
  }

  std::string of(const DiffLine& line) const {
    std::string text;
    if (hasOneNumber) {
      text = rightAligned(line.masterLine != 0 ? line.masterLine : line.outputLine,
                          std::max(masterDigits, outputDigits));
    } else if (masterDigits + outputDigits > 0) {
      text = rightAligned(line.masterLine, masterDigits) + ' ' +
             rightAligned(line.outputLine, outputDigits);
    }
    return text + (text.empty() ? "" : " ") + signOf(line.kind) + ' ';
  }

 private:
  static std::size_t digits(std::uint64_t number) {
    return number == 0 ? 0 : std::to_string(number).size();
  }
};

DifferencePrinter::DifferencePrinter(const DifferenceView& view, const Palette& palette)
    : m_view(view),
      m_palette(palette),
      m_width(widthFor(view)),
      m_indent(m_width < kNarrow ? 0 : view.indent, ' ') {}

void DifferencePrinter::print(const Difference& difference, std::ostream& out) const {
  for (const std::string& note : difference.notes) {
    out << m_indent << printable(note) << '\n';
  }
  std::size_t shown = difference.hunks.size();
  if (m_view.maxHunks != 0) {
    shown = std::min(shown, m_view.maxHunks);
  }
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0 && difference.hunks[i].place.empty()) {
      out << m_indent << m_palette.paint(Color::Dim, "--") << '\n';
    }
    printHunk(difference.hunks[i], out);
  }
  printCounts(difference, shown, out);
}

void DifferencePrinter::printCounts(const Difference& difference, std::size_t shown,
                                    std::ostream& out) const {
  if (difference.hunkCount > shown) {
    out << m_indent << countOf(difference.hunkCount - shown, "more difference")
        << (shown > 0 ? " (--max-diffs)" : "") << '\n';
  }
  if (difference.isCoarse) {
    out << m_indent << "too large or too different to be compared in every detail\n";
  }
}

void DifferencePrinter::printHunk(const DiffHunk& hunk, std::ostream& out) const {
  if (!hunk.place.empty()) {
    out << m_indent << printable(hunk.place) << '\n';
  }
  const Gutter gutter(hunk, m_width < kNarrow);
  for (const DiffLine& line : hunk.lines) {
    printLine(line, gutter, out);
    if (line.omitted > 0) {
      DiffLine rest;
      rest.kind = line.kind;
      out << m_indent << gutter.of(rest)
          << m_palette.paint(Color::Dim, kCutSign + (' ' + countOf(line.omitted, "more line")))
          << '\n';
    }
  }
}

void DifferencePrinter::printLine(const DiffLine& line, const Gutter& gutter,
                                  std::ostream& out) const {
  const std::string start = m_indent + gutter.of(line);
  const std::string blankStart(start.size(), ' ');
  const std::size_t width = std::max(m_width - std::min(m_width, start.size()), kLeastText);
  DiffCells cells = cellsOf(line, m_view.showsMasks);
  if (line.kind == Kind::Context) {
    clip(cells, width);
  }
  std::size_t begin = 0;
  do {
    const std::size_t end = endOfRow(cells, begin, width);
    const std::string& front = begin == 0 ? start : blankStart;
    out << (cells.empty() ? front.substr(0, front.find_last_not_of(' ') + 1) : front)
        << paintedRow(cells, begin, end, line.kind, m_palette) << '\n';
    const std::string marks = m_palette.isColored() ? "" : marksBelow(cells, begin, end);
    if (!marks.empty()) {
      out << blankStart << marks << '\n';
    }
    begin = end;
  } while (begin < cells.size());
}

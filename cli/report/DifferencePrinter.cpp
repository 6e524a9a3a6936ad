#include "cli/report/DifferencePrinter.h"

#include <algorithm>

#include "cli/terminal/Printable.h"

namespace {

using Kind = DiffLine::Kind;

constexpr std::size_t kUsualWidth = 100;
constexpr std::size_t kNarrow = 50;    // narrower: no indent, and one number a line
constexpr std::size_t kLeastText = 8;  // columns for the text, however narrow the terminal is
constexpr const char* kCut = "\u2026";

enum class Style { Plain, Changed, Dim };

/// A character as it is shown.
struct Cell {
  std::string shown;
  std::size_t columns;
  Style style;
};

using Cells = std::vector<Cell>;

bool isBlankText(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// A character of a file. Blanks that are all of a change are made visible, and brackets that look
/// like those of a mask are told apart from them.
PrintableCharacter shownCharacter(std::string_view text, bool isBlankChange) {
  constexpr std::string_view kMaskBrackets[] = {"\u27E8", "\u27E9"};
  constexpr std::string_view kNoBreakSpace = "\u00A0";
  if (isBlankChange && text.front() == ' ') {
    return {1, "\u00B7", 1};
  }
  for (const auto& [character, escape] :
       {std::pair{kMaskBrackets[0], "\\u{27E8}"}, std::pair{kMaskBrackets[1], "\\u{27E9}"},
        std::pair{kNoBreakSpace, "\\u{00A0}"}}) {
    if (text.substr(0, character.size()) == character) {
      return {character.size(), escape, std::string_view(escape).size()};
    }
  }
  return firstPrintable(text);
}

void addText(std::string_view text, Style style, Cells& cells) {
  const bool isBlankChange = style == Style::Changed && isBlankText(text);
  while (!text.empty()) {
    PrintableCharacter character = shownCharacter(text, isBlankChange);
    cells.push_back({std::move(character.shown), character.columns, style});
    text.remove_prefix(character.length);
  }
}

void addSign(std::string_view sign, Cells& cells) {
  cells.push_back({std::string(sign), 1, Style::Dim});
}

void addSpan(const DiffSpan& span, bool showsMasks, Style changed, Cells& cells) {
  if (span.kind != DiffSpan::Kind::Masked) {
    addText(span.text, span.kind == DiffSpan::Kind::Changed ? changed : Style::Plain, cells);
  } else if (showsMasks) {
    addSign("\u27E8", cells);
    addText(span.rule, Style::Dim, cells);
    addSign("\u27E9", cells);
  }
}

/// Whether some, but not all, of a line has changed, so that it is worth marking.
bool isPartlyChanged(const DiffLine& line) {
  const auto is = [&line](DiffSpan::Kind kind) {
    return std::any_of(line.spans.begin(), line.spans.end(),
                       [kind](const DiffSpan& span) { return span.kind == kind; });
  };
  return is(DiffSpan::Kind::Changed) && is(DiffSpan::Kind::Same);
}

bool isOnlyBlanks(const DiffLine& line) {
  return std::all_of(line.spans.begin(), line.spans.end(),
                     [](const DiffSpan& span) { return isBlankText(span.text); });
}

Cells cellsOf(const DiffLine& line, bool showsMasks) {
  const bool isMarked = isPartlyChanged(line) || isOnlyBlanks(line);
  Cells cells;
  if (line.isCutBefore) {
    addSign(kCut, cells);
  }
  for (const DiffSpan& span : line.spans) {
    addSpan(span, showsMasks, isMarked ? Style::Changed : Style::Plain, cells);
  }
  if (line.isCutAfter) {
    addSign(kCut, cells);
  }
  return cells;
}

/// The end of the row that starts at `begin`; at least one character long.
std::size_t endOfRow(const Cells& cells, std::size_t begin, std::size_t width) {
  std::size_t columns = 0;
  std::size_t end = begin;
  while (end < cells.size() && (columns + cells[end].columns <= width || end == begin)) {
    columns += cells[end].columns;
    ++end;
  }
  return end;
}

/// Leaves as much of the cells as one row takes.
void clip(Cells& cells, std::size_t width) {
  if (endOfRow(cells, 0, width) < cells.size()) {
    cells.resize(endOfRow(cells, 0, width - 1));
    addSign(kCut, cells);
  }
}

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
      m_indent(m_width < kNarrow ? 0 : 10, ' ') {}

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
          << m_palette.paint(Color::Dim, kCut + (' ' + countOf(line.omitted, "more line"))) << '\n';
    }
  }
}

/// Writes a line in rows of one width.
class DifferencePrinter::Rows {
 public:
  Rows(const Palette& palette, Kind kind, std::ostream& out)
      : m_palette(palette), m_kind(kind), m_out(out) {}

  void write(const Cells& cells, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end;) {
      std::string run;
      const Style style = cells[i].style;
      for (; i < end && cells[i].style == style; ++i) {
        run += cells[i].shown;
      }
      m_out << painted(run, style);
    }
    m_out << '\n';
  }

  /// A row of carets under what has changed, if anything has.
  void mark(const Cells& cells, std::size_t begin, std::size_t end, const std::string& gutter) {
    std::string marks;
    for (std::size_t i = begin; i < end; ++i) {
      marks.append(cells[i].columns, cells[i].style == Style::Changed ? '^' : ' ');
    }
    const std::size_t last = marks.find_last_of('^');
    if (last != std::string::npos) {
      m_out << gutter << marks.substr(0, last + 1) << '\n';
    }
  }

 private:
  std::string painted(const std::string& text, Style style) const {
    if (style == Style::Dim) {
      return m_palette.paint(Color::Dim, text);
    }
    const bool isMarked = style == Style::Changed;
    switch (m_kind) {
      case Kind::Removed:
        return m_palette.paint(isMarked ? Color::RedMarked : Color::Red, text);
      case Kind::Added:
        return m_palette.paint(isMarked ? Color::GreenMarked : Color::Green, text);
      case Kind::Context:
        break;
    }
    return text;
  }

  const Palette& m_palette;
  const Kind m_kind;
  std::ostream& m_out;
};

void DifferencePrinter::printLine(const DiffLine& line, const Gutter& gutter,
                                  std::ostream& out) const {
  const std::string start = m_indent + gutter.of(line);
  const std::string blankStart(start.size(), ' ');
  const std::size_t width = std::max(m_width - std::min(m_width, start.size()), kLeastText);
  Cells cells = cellsOf(line, m_view.showsMasks);
  if (line.kind == Kind::Context) {
    clip(cells, width);
  }
  Rows rows(m_palette, line.kind, out);
  std::size_t begin = 0;
  do {
    const std::size_t end = endOfRow(cells, begin, width);
    const std::string& front = begin == 0 ? start : blankStart;
    out << (cells.empty() ? front.substr(0, front.find_last_not_of(' ') + 1) : front);
    rows.write(cells, begin, end);
    if (!m_palette.isColored()) {
      rows.mark(cells, begin, end, blankStart);
    }
    begin = end;
  } while (begin < cells.size());
}

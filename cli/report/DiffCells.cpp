#include "cli/report/DiffCells.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/terminal/Printable.h"

namespace {

using Style = DiffCell::Style;

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

void addText(std::string_view text, Style style, DiffCells& cells) {
  const bool isBlankChange = style == Style::Changed && isBlankText(text);
  while (!text.empty()) {
    PrintableCharacter character = shownCharacter(text, isBlankChange);
    cells.push_back({std::move(character.shown), character.columns, style});
    text.remove_prefix(character.length);
  }
}

void addSign(std::string_view sign, DiffCells& cells) {
  cells.push_back({std::string(sign), 1, Style::Dim});
}

void addSpan(const DiffSpan& span, bool showsMasks, Style changed, DiffCells& cells) {
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

std::string painted(const std::string& text, Style style, DiffLine::Kind kind,
                    const Palette& palette) {
  if (style == Style::Dim) {
    return palette.paint(Color::Dim, text);
  }
  const bool isMarked = style == Style::Changed;
  switch (kind) {
    case DiffLine::Kind::Removed:
      return palette.paint(isMarked ? Color::RedMarked : Color::Red, text);
    case DiffLine::Kind::Added:
      return palette.paint(isMarked ? Color::GreenMarked : Color::Green, text);
    case DiffLine::Kind::Context:
      break;
  }
  return text;
}

}  // namespace

DiffCells cellsOf(const DiffLine& line, bool showsMasks) {
  const bool isMarked = isPartlyChanged(line) || isOnlyBlanks(line);
  DiffCells cells;
  if (line.isCutBefore) {
    addSign(kCutSign, cells);
  }
  for (const DiffSpan& span : line.spans) {
    addSpan(span, showsMasks, isMarked ? Style::Changed : Style::Plain, cells);
  }
  if (line.isCutAfter) {
    addSign(kCutSign, cells);
  }
  return cells;
}

std::size_t endOfRow(const DiffCells& cells, std::size_t begin, std::size_t width) {
  std::size_t columns = 0;
  std::size_t end = begin;
  while (end < cells.size() && (columns + cells[end].columns <= width || end == begin)) {
    columns += cells[end].columns;
    ++end;
  }
  return end;
}

void clip(DiffCells& cells, std::size_t width) {
  if (endOfRow(cells, 0, width) < cells.size()) {
    cells.resize(endOfRow(cells, 0, width - 1));
    addSign(kCutSign, cells);
  }
}

std::string paintedRow(const DiffCells& cells, std::size_t begin, std::size_t end,
                       DiffLine::Kind kind, const Palette& palette) {
  std::string row;
  for (std::size_t i = begin; i < end;) {
    std::string run;
    const Style style = cells[i].style;
    for (; i < end && cells[i].style == style; ++i) {
      run += cells[i].shown;
    }
    row += painted(run, style, kind, palette);
  }
  return row;
}

std::string marksBelow(const DiffCells& cells, std::size_t begin, std::size_t end) {
  std::string marks;
  for (std::size_t i = begin; i < end; ++i) {
    marks.append(cells[i].columns, cells[i].style == Style::Changed ? '^' : ' ');
  }
  return marks.substr(0, marks.find_last_of('^') + 1);
}

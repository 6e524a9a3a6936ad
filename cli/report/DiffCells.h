#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/record/Difference.h"
#include "cli/terminal/Terminal.h"

// A line of a difference as characters on a terminal, for all who lay lines out in rows.

/// A character as it is shown: text of a file is escaped, so that none can pass for the program's
/// own or reach the terminal as a command.
struct DiffCell {
  enum class Style { Plain, Changed, Dim };
  std::string shown;
  std::size_t columns;
  Style style;
};

using DiffCells = std::vector<DiffCell>;

constexpr const char* kCutSign = "\u2026";

/// The characters of a line; those of masked stretches are the name of the rule in ⟨⟩, or nothing.
DiffCells cellsOf(const DiffLine& line, bool showsMasks);

/// The end of the row that starts at `begin`; at least one character long.
std::size_t endOfRow(const DiffCells& cells, std::size_t begin, std::size_t width);

/// Leaves as much of the cells as one row takes.
void clip(DiffCells& cells, std::size_t width);

/// The cells from `begin` to `end`, in the colours of a line of that kind.
std::string paintedRow(const DiffCells& cells, std::size_t begin, std::size_t end,
                       DiffLine::Kind kind, const Palette& palette);

/// Carets for the row below, under what has changed; empty if nothing has.
std::string marksBelow(const DiffCells& cells, std::size_t begin, std::size_t end);

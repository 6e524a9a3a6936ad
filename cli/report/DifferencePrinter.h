#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/record/Difference.h"
#include "cli/terminal/Terminal.h"

/// How a person wants to see differences.
struct DifferenceView {
  std::size_t maxHunks = 3;  ///< of a pair; 0: all that there are
  std::size_t width = 0;     ///< in columns; 0: that of the terminal, or 100
  bool showsMasks = true;
  std::size_t indent = 10;  ///< in columns; none on a narrow terminal
};

/// Prints how two files differ, for a person at a terminal:
///
///     11 11   <tr>
///     12    - <td>15.20</td>⟨IdAttribute⟩
///                 ^^^^^
///        12 + <td>16.20</td>⟨IdAttribute⟩
///                 ^^^^^
///
/// The numbers are those of the lines in master and output. Where there are colours, they mark what
/// has changed, and no carets are needed. All text of the files is escaped, so that none can pass
/// for the printer's own or reach the terminal as a command; rows are broken between characters.
class DifferencePrinter {
 public:
  /// `palette` must outlive the printer.
  DifferencePrinter(const DifferenceView& view, const Palette& palette);

  /// Prints the first hunks, as many as the view wants, and what else there is to know.
  void print(const Difference& difference, std::ostream& out) const;

 private:
  struct Gutter;

  void printHunk(const DiffHunk& hunk, std::ostream& out) const;
  void printLine(const DiffLine& line, const Gutter& gutter, std::ostream& out) const;
  void printCounts(const Difference& difference, std::size_t shown, std::ostream& out) const;

  const DifferenceView m_view;
  const Palette& m_palette;
  const std::size_t m_width;
  const std::string m_indent;
};

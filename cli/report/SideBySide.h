#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/record/Difference.h"
#include "cli/terminal/Terminal.h"

/// Prints hunks in two columns, the master's lines left and the output's right:
///
///     11   <tr>             │ 11   <tr>
///     12 - <td>15.20</td>   │ 12 + <td>16.20</td>
///              ^^^^^        │          ^^^^^
///
/// Long lines take several rows. Where there are colours, no carets are needed.
class SideBySide {
 public:
  /// `width` is that of both columns. `palette` must outlive the object.
  SideBySide(std::size_t width, bool showsMasks, const Palette& palette);

  void print(const DiffHunk& hunk, std::ostream& out) const;

 private:
  using Rows = std::vector<std::pair<std::string, std::size_t>>;  ///< and their columns

  struct Block;
  Rows rowsOf(const DiffLine& line, std::uint64_t number, std::size_t digits) const;
  void print(const Block& block, std::ostream& out) const;

  const std::size_t m_columns;  ///< of one side
  const bool m_showsMasks;
  const Palette& m_palette;
};

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The grammar of separated values, for all who read them.
///
/// A cell ends at a separator or a line end ("\n" or "\r\n"). One that starts with a quote may
/// contain both, and doubled quotes; what follows its closing quote belongs to its value too.
struct CsvGrammar {
  char separator = ',';
  bool quotesCount = true;  ///< false: quotes are like any other character

  static std::string_view withoutByteOrderMark(std::string_view text);

  /// Whether a line ends at `position`, which is within `text`.
  static bool isLineEnd(std::string_view text, std::size_t position);

  /// Where the next line starts if one ends at `position`.
  static std::size_t nextLine(std::string_view text, std::size_t position) {
    return position + (text[position] == '\r' ? 2 : 1);
  }

  /// Where the cell that starts at `begin` ends, at the end of `text` at the latest; `npos` if it
  /// is quoted and its quote is not closed.
  std::size_t endOfCell(std::string_view text, std::size_t begin) const;

  /// The value of a cell as it is in the file. Uses `buffer` if it is quoted.
  std::string_view valueOf(std::string_view cell, std::string& buffer) const;
};

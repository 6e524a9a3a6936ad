#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// One character of a text, safe to print on a terminal.
struct PrintableCharacter {
  std::size_t length;   ///< in bytes of the text, at least 1
  std::string shown;    ///< the character, or an escape such as "\n", "\x1B", "\u{202E}", "\\"
  std::size_t columns;  ///< width on a terminal
};

/// The first character of `text`, which must not be empty. Escapes control characters, invisible
/// characters, characters that change the direction of text, and invalid UTF-8.
PrintableCharacter firstPrintable(std::string_view text);

/// All of `text`, escaped likewise, as one line.
std::string printable(std::string_view text);

/// `text`, which must be printable, in rows of at most `columns`, broken at blanks where possible.
/// What changes colours takes no column, here and below.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

/// As much of `text` as fits into `columns`; what is left out is told by "…".
std::string clipped(const std::string& text, std::size_t columns);

/// "1 pair", "2 pairs".
std::string countOf(std::size_t count, std::string_view noun);

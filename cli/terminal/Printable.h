#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// One character of a text as a terminal may show it.
struct PrintableCharacter {
  std::size_t length;   ///< bytes it takes in the text, at least 1
  std::string shown;    ///< itself, or an escape: "\n", "\x1B", "\u{202E}", "\\"
  std::size_t columns;  ///< of the terminal
};

/// The first character of `text`, which must not be empty. Whatever could move the cursor, hide or
/// reorder text becomes an escape, and so does a byte that is no valid UTF-8.
PrintableCharacter firstPrintable(std::string_view text);

/// All of `text` in that form, on one line.
std::string printable(std::string_view text);

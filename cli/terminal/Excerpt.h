#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// A position in a text. Both count from 1; columns are characters.
struct TextPosition {
  std::size_t line;
  std::size_t column;
};

/// Part of a line, escaped for a terminal.
struct Excerpt {
  std::string before;   ///< text before the difference, the same on both sides
  std::size_t columns;  ///< width of `before` on a terminal
  std::string first;    ///< the first character that differs, or "[end of text]"
  std::string rest;     ///< text after `first`, to the end of the line at most
};

/// The start of the UTF-8 character that contains byte `position`, which is at most the text's
/// length. Looks only at earlier bytes: if two texts first differ at `position`, the result is the
/// same for both.
std::size_t startOfCharacter(const char* text, std::size_t position);

/// The line and column of byte `position`.
TextPosition locate(const char* text, std::size_t position);

/// An excerpt around byte `position`, which must be the start of a character. Its cost does not
/// depend on the length of the text.
Excerpt excerptAround(const char* text, std::size_t position);

/// All of `text`, escaped, as one line; its middle is left out if it has many more columns than
/// `columns`. The cost does not depend on the length of the text.
std::string shortened(std::string_view text, std::size_t columns);

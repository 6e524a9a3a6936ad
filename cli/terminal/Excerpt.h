#pragma once

#include <cstddef>
#include <string>

/// Where in a text something is; both count from 1, the column in characters.
struct TextPosition {
  std::size_t line;
  std::size_t column;
};

/// A piece of one line of a text, safe for a terminal.
struct Excerpt {
  std::string before;   ///< what stands before the difference, the same on both sides
  std::size_t columns;  ///< of `before` on a terminal
  std::string first;    ///< the first character that differs, or that the text ends here
  std::string rest;     ///< what follows it
};

/// Where the character of `text` starts in which byte `position` lies, going by the bytes before it
/// alone: a difference inside a character is one of that character, and both sides agree where it
/// starts. `position` is at most the text's length.
std::size_t startOfCharacter(const char* text, std::size_t position);

/// The line and column of byte `position`.
TextPosition locate(const char* text, std::size_t position);

/// A few words around byte `position`, the start of a character. Reads no more of the text than it
/// shows, however long that is.
Excerpt excerptAround(const char* text, std::size_t position);

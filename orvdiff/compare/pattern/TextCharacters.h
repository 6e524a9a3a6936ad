#pragma once

#include <bitset>
#include <cstddef>
#include <string_view>

/// What ICU's expressions see at a byte position of a UTF-8 text. Bytes that are not valid UTF-8
/// belong to no class of characters.
namespace orvdiff::pattern {

using ByteSet = std::bitset<256>;

/// Whether `c` is one of the 128 ASCII characters, NUL and DEL included.
inline bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

inline unsigned char byteAt(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

inline bool startsWith(std::string_view text, std::size_t position, std::string_view literal) {
  return text.compare(position, literal.size(), literal) == 0;
}

/// Whether a line end of more than one byte starts at `position`: U+0085, U+2028 or U+2029.
bool isLongLineEnd(std::string_view text, std::size_t position);

/// Whether a line end starts at `position`: LF, VT, FF, CR or a longer one.
inline bool isLineEnd(std::string_view text, std::size_t position) {
  const unsigned char byte = byteAt(text, position);
  return byte < 0x80 ? byte >= '\n' && byte <= '\r' : isLongLineEnd(text, position);
}

/// Whether `position` is in the middle of a line end. A match must not start there: "." would take
/// the rest of the line end for a character of its own.
bool isInsideLineEnd(std::string_view text, std::size_t position);

/// Length in bytes of the white-space character at `position`, 0 if there is none.
std::size_t whiteSpaceLength(std::string_view text, std::size_t position);

/// Whether exactly one of the characters before and at `position` is a word character. Combining
/// characters belong to the one before them.
bool isWordBoundary(std::string_view text, std::size_t position);

}  // namespace orvdiff::pattern

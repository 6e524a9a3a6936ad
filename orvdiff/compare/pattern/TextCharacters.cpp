#include "orvdiff/compare/pattern/TextCharacters.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace orvdiff::pattern {
namespace {

bool isCombining(UChar32 c) {
  return c >= 0 &&
         (u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND) || u_charType(c) == U_FORMAT_CHAR);
}

bool isWordCharacter(UChar32 c) {
  return c >= 0 && (u_hasBinaryProperty(c, UCHAR_ALPHABETIC) ||
                    (U_GET_GC_MASK(c) & (U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK)) != 0);
}

/// The character at `position`, which moves past it; negative if the bytes are not valid UTF-8.
UChar32 characterAt(std::string_view text, std::size_t& position) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  UChar32 character = 0;
  U8_NEXT(bytes, position, text.size(), character);
  return character;
}

/// The character before `position`, which moves to its start.
UChar32 characterBefore(std::string_view text, std::size_t& position) {
  const auto window = static_cast<std::int32_t>(std::min<std::size_t>(position, U8_MAX_LENGTH));
  const char* const begin = text.data() + position - window;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(begin);
  std::int32_t index = window;
  UChar32 character = 0;
  U8_PREV(bytes, 0, index, character);
  position -= static_cast<std::size_t>(window - index);
  return character;
}

}  // namespace

bool isLongLineEnd(std::string_view text, std::size_t position) {
  const unsigned char byte = byteAt(text, position);
  return (byte == 0xC2 && startsWith(text, position, "\xC2\x85")) ||
         (byte == 0xE2 && (startsWith(text, position, "\xE2\x80\xA8") ||
                           startsWith(text, position, "\xE2\x80\xA9")));
}

bool isInsideLineEnd(std::string_view text, std::size_t position) {
  return byteAt(text, position) >= 0x80 && ((position >= 1 && isLongLineEnd(text, position - 1)) ||
                                            (position >= 2 && byteAt(text, position - 2) == 0xE2 &&
                                             isLongLineEnd(text, position - 2)));
}

std::size_t whiteSpaceLength(std::string_view text, std::size_t position) {
  if (position >= text.size()) {
    return 0;
  }
  std::size_t next = position;
  const UChar32 character = characterAt(text, next);
  return character >= 0 && u_isUWhiteSpace(character) != 0 ? next - position : 0;
}

bool isWordBoundary(std::string_view text, std::size_t position) {
  bool isWord = false;
  if (position < text.size()) {
    std::size_t next = position;
    const UChar32 character = characterAt(text, next);
    if (isCombining(character)) {
      return false;
    }
    isWord = isWordCharacter(character);
  }
  UChar32 before = U_SENTINEL;
  while (position > 0 && isCombining(before = characterBefore(text, position))) {
  }
  return isWord != (isWordCharacter(before) && !isCombining(before));
}

}  // namespace orvdiff::pattern

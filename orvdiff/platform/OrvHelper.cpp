#include "orvdiff/platform/OrvHelper.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <string_view>

namespace orvdiff::host {

namespace {

bool isXmlCharacter(UChar32 c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || c >= 0x10000;
}

std::string_view encoded(UChar32 c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return isXmlCharacter(c) ? std::string_view() : "\xEF\xBF\xBD";
  }
}

}  // namespace

void OrvHelper::fileBasename(const std::string& fileName, std::string& base,
                             std::string& extension) {
  const std::size_t dot = fileName.rfind('.');
  const bool cut = dot != std::string::npos && dot != 0;
  base = fileName.substr(0, cut ? dot : std::string::npos);
  extension = cut ? fileName.substr(dot + 1) : std::string();
}

void OrvHelper::xmlEncode(const char* text, std::size_t length, VELByteBuffer& buffer) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text);
  std::size_t next = 0;
  while (next < length) {
    const std::size_t start = next;
    UChar32 character = 0;
    U8_NEXT(bytes, next, length, character);  // negative for invalid UTF-8
    const std::string_view replacement = encoded(character);
    if (replacement.empty()) {
      buffer.append(text + start, next - start);
    } else {
      buffer.append(replacement.data(), replacement.size());
    }
  }
}

}  // namespace orvdiff::host

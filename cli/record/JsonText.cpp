#include "cli/record/JsonText.h"

#include <unicode/utf8.h>

#include <charconv>
#include <cstdint>
#include <stdexcept>

namespace {

bool isUtf8(const std::string& text) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int64_t>(text.size());
  std::int64_t next = 0;
  while (next < length) {
    UChar32 character = 0;
    U8_NEXT(bytes, next, length, character);
    if (character < 0) {
      return false;
    }
  }
  return true;
}

std::string fromHex(const std::string& digits) {
  std::string text;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    unsigned char byte = 0;
    const char* const end = digits.data() + i + 2;
    if (std::from_chars(digits.data() + i, end, byte, 16).ptr != end) {
      throw std::runtime_error("\"" + digits + "\" is not hexadecimal");
    }
    text += static_cast<char>(byte);
  }
  return text;
}

}  // namespace

nlohmann::ordered_json textToJson(const std::string& text) {
  if (isUtf8(text)) {
    return text;
  }
  constexpr const char* kDigits = "0123456789abcdef";
  std::string digits;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 0xF];
  }
  return {{"hex", digits}};
}

std::string textFromJson(const nlohmann::ordered_json& json) {
  return json.is_object() ? fromHex(json.at("hex").get<std::string>()) : json.get<std::string>();
}

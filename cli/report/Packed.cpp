#include "cli/report/Packed.h"

#include <zlib.h>

#include <cstdint>
#include <new>

std::string base64(std::string_view bytes) {
  constexpr const char* kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t three = 0;
    for (std::size_t k = i; k < i + 3; ++k) {
      three = three << 8U | (k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0U);
    }
    for (unsigned k = 0; k < 4; ++k) {
      const bool isPadding = i + k > bytes.size();
      text += isPadding ? '=' : kDigits[three >> (18U - 6U * k) & 0x3FU];
    }
  }
  return text;
}

std::string packed(std::string_view text) {
  uLongf size = compressBound(static_cast<uLong>(text.size()));
  std::string bytes(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(bytes.data()), &size,
                reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()),
                Z_DEFAULT_COMPRESSION) != Z_OK) {
    throw std::bad_alloc();
  }
  bytes.resize(size);
  return base64(bytes);
}

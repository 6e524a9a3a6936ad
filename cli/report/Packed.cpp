#include "cli/report/Packed.h"

#include <zlib.h>

#include <cstdint>
#include <new>
#include <utility>

namespace {

constexpr std::size_t kBytesOfBlock = std::size_t{1} << 20;
constexpr std::size_t kPlainBlocks = 8;

/// The bytes of zlib's format. Raises `std::bad_alloc`.
std::string compressed(std::string_view text, int level) {
  uLongf size = compressBound(static_cast<uLong>(text.size()));
  std::string bytes(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(bytes.data()), &size,
                reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()),
                level) != Z_OK) {
    throw std::bad_alloc();
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

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
  return base64(compressed(text, Z_DEFAULT_COMPRESSION));
}

void PackedText::add(std::string_view text) {
  while (!text.empty()) {
    const std::string_view part = text.substr(0, kBytesOfBlock - m_last.size());
    m_last += part;
    text.remove_prefix(part.size());
    if (m_last.size() == kBytesOfBlock) {
      close();
    }
  }
}

void PackedText::close() {
  const bool isPlain = m_blocks.size() < kPlainBlocks;
  std::string bytes = isPlain ? std::move(m_last) : compressed(m_last, Z_BEST_SPEED);
  bytes.shrink_to_fit();
  m_blocks.push_back(std::move(bytes));
  m_last.clear();
}

void PackedText::write(const std::function<void(std::string_view)>& take) const {
  std::string text;
  for (std::size_t i = 0; i < m_blocks.size(); ++i) {
    const std::string& block = m_blocks[i];
    if (i < kPlainBlocks) {
      take(block);
      continue;
    }
    text.resize(kBytesOfBlock);
    uLongf size = kBytesOfBlock;
    if (uncompress(reinterpret_cast<Bytef*>(text.data()), &size,
                   reinterpret_cast<const Bytef*>(block.data()),
                   static_cast<uLong>(block.size())) != Z_OK) {
      throw std::bad_alloc();
    }
    take(text);
  }
  take(m_last);
}

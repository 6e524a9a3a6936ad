#include "orvdiff/engine/InMemoryText.h"

#include <algorithm>
#include <cstring>

namespace {

/// What libstdc++ reserves for a stream that owns its memory, before anything is written to it.
constexpr std::size_t kFirstReserve = 16;

std::size_t position(std::strstream& stream, std::ios::openmode side) {
  const std::streamoff offset = stream.rdbuf()->pubseekoff(0, std::ios::cur, side);
  return offset > 0 ? static_cast<std::size_t>(offset) : 0;
}

/// How far the stream's memory reaches, written or not.
std::size_t capacity(std::strstream& stream) {
  std::strstreambuf& buffer = *stream.rdbuf();
  const std::size_t current = position(stream, std::ios::in);
  buffer.pubseekoff(0, std::ios::end, std::ios::in);
  const std::size_t end = position(stream, std::ios::in);
  buffer.pubseekpos(static_cast<std::streamoff>(current), std::ios::in);
  // A stream that appends to a text of the host's reports the length of that text twice.
  const auto written = static_cast<std::size_t>(stream.pcount());
  return end - std::min(end, position(stream, std::ios::out) - written);
}

}  // namespace

std::size_t heldLength(std::strstream& stream) {
  const std::size_t written = position(stream, std::ios::out);
  if (written > 0) {
    return written;
  }
  const std::size_t reserved = capacity(stream);
  return reserved == kFirstReserve ? 0 : reserved;
}

InMemoryText::InMemoryText(std::strstream& stream) : m_stream(stream) {
  const std::size_t length = heldLength(stream);
  const char* const bytes = stream.str();
  if (bytes == nullptr || length == 0) {
    return;
  }
  m_text = bytes;
  if (std::memchr(bytes, '\0', std::max(length, capacity(stream))) == nullptr) {
    m_copy.assign(bytes, length);
    m_text = m_copy.c_str();
  }
}

void InMemoryText::unfreeze() {
  m_stream.freeze(false);
}

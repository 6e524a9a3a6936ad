#pragma once

#include <cstddef>
#include <string>

namespace orvdiff::host {

/// A growable byte buffer that can be read as a NUL-terminated string.
class VELByteBuffer {
 public:
  /// Reserves `initialSize` bytes. Grows geometrically, by at least `growBy` bytes at a time.
  VELByteBuffer(std::size_t initialSize, std::size_t growBy) : m_growBy(growBy) {
    m_bytes.reserve(initialSize);
  }

  void append(const char* bytes, std::size_t count) {
    if (m_bytes.capacity() - m_bytes.size() < count && count < m_growBy) {
      m_bytes.reserve(m_bytes.size() + m_growBy);
    }
    m_bytes.append(bytes, count);
  }

  const char* str() const { return m_bytes.c_str(); }
  std::size_t size() const { return m_bytes.size(); }

 private:
  std::size_t m_growBy;
  std::string m_bytes;
};

}  // namespace orvdiff::host

using orvdiff::host::VELByteBuffer;

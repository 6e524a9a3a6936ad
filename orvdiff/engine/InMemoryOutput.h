#pragma once

#include <string>
#include <string_view>

#include "orvdiff/platform/OrvStrStream.h"

/// An output that the host holds in memory, as text and as bytes; `OrvTestInfo` tells what each of
/// the two is made of, and in which state a host has to leave the stream. While this object lives,
/// the stream's buffer is frozen and the host must not write to it; afterwards the stream is the
/// host's again, to go on writing to or to free.
class InMemoryOutput {
 public:
  explicit InMemoryOutput(std::strstream& stream);
  ~InMemoryOutput();
  InMemoryOutput(const InMemoryOutput&) = delete;
  InMemoryOutput& operator=(const InMemoryOutput&) = delete;

  /// NUL-terminated. Lives as long as this object.
  const char* text();

  /// Lives as long as this object.
  std::string_view bytes() const { return m_bytes; }

  /// Whether nothing shows that the host wrote more than `bytes`.
  bool isWhole() const { return m_isWhole; }

  /// Puts the read position at the start, wherever and in whatever state the stream was left.
  void rewind();

 private:
  std::strstream& m_stream;
  std::string_view m_memory;  ///< written or not
  std::string_view m_bytes;
  bool m_isWhole = true;
  std::string m_endedText;  ///< a text with the NUL that the memory has no room for
};

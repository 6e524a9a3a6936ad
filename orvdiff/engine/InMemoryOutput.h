#pragma once

#include <string>
#include <string_view>

#include "orvdiff/platform/OrvStrStream.h"

/// An output that the host holds in memory, as text and as bytes. `OrvTestInfo` defines both and
/// says in which state the host must leave the stream. While this object lives, the stream's buffer
/// is frozen and the host must not write to it; then the host may write to it or free it again.
class InMemoryOutput {
 public:
  explicit InMemoryOutput(std::strstream& stream);
  ~InMemoryOutput();
  InMemoryOutput(const InMemoryOutput&) = delete;
  InMemoryOutput& operator=(const InMemoryOutput&) = delete;

  /// NUL-terminated; valid as long as this object lives.
  const char* text();

  /// Valid as long as this object lives.
  std::string_view bytes() const { return m_bytes; }

  /// False if the host evidently wrote more than `bytes`.
  bool isWhole() const { return m_isWhole; }

  /// Moves the read position to the start and clears the stream's error state.
  void rewind();

 private:
  std::strstream& m_stream;
  std::string_view m_memory;  ///< written or not
  std::string_view m_bytes;
  bool m_isWhole = true;
  std::string m_endedText;  ///< a copy with a NUL, if the memory contains none
};

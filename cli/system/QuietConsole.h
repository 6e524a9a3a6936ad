#pragma once

#include <iostream>

/// Discards everything printed on `std::cout` during its lifetime.
class QuietConsole {
 public:
  /// Does nothing unless `enabled`.
  explicit QuietConsole(bool enabled = true) : m_buffer(std::cout.rdbuf()) {
    if (enabled) {
      std::cout.rdbuf(nullptr);
    }
  }
  QuietConsole(const QuietConsole&) = delete;
  QuietConsole& operator=(const QuietConsole&) = delete;
  ~QuietConsole() {
    if (std::cout.rdbuf() != m_buffer) {
      std::cout.rdbuf(m_buffer);  // also clears the error state set by writing to a null buffer
    }
  }

 private:
  std::streambuf* const m_buffer;
};

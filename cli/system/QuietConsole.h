#pragma once

#include <iostream>

/// Keeps what the library prints on `std::cout` to itself while this lives.
class QuietConsole {
 public:
  /// `enabled` false: does nothing.
  explicit QuietConsole(bool enabled = true) : m_buffer(std::cout.rdbuf()) {
    if (enabled) {
      std::cout.rdbuf(nullptr);
    }
  }
  QuietConsole(const QuietConsole&) = delete;
  QuietConsole& operator=(const QuietConsole&) = delete;
  ~QuietConsole() {
    if (std::cout.rdbuf() != m_buffer) {
      std::cout.rdbuf(m_buffer);  // also clears the error of writing to nothing
    }
  }

 private:
  std::streambuf* const m_buffer;
};

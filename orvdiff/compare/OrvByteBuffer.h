#pragma once

#include <memory>

/// Releases an `OrvByteBuffer`; its own type keeps bytes from being taken for a text.
struct OrvByteBufferDeleter {
  /// Releases what `new char[]` allocated, or null.
  void operator()(const char* bytes) const { delete[] bytes; }
};

/// Owned bytes whose count is known. No NUL ends them, so they do not convert to an
/// `OrvTextBuffer`.
using OrvByteBuffer = std::unique_ptr<char[], OrvByteBufferDeleter>;

#pragma once

#include <cstdio>

#include "orvdiff/orvdiff_export.h"

/// Owns one open stdio stream and closes it exactly once. Not thread-safe.
class ORVDIFF_API OrvFileHandle {
 public:
  /// Opens `path` in stdio mode `mode`. If that fails, or either argument is null, the handle holds
  /// null. For reading, only a regular file can be opened: not a folder, and not a pipe, which
  /// might block forever. Raises `VELStdExceptionError` if a file cannot be opened for reading
  /// because the process has run out of memory or descriptors.
  OrvFileHandle(const char* path, const char* mode);

  /// Adopts an open stream, or null.
  explicit OrvFileHandle(FILE* stream);

  /// Closes the stream; never throws.
  virtual ~OrvFileHandle();

  OrvFileHandle(const OrvFileHandle&) = delete;
  OrvFileHandle& operator=(const OrvFileHandle&) = delete;

  /// The stream, or null if nothing is open. The handle keeps it.
  operator FILE*() const { return m_stream; }  // NOLINT(google-explicit-constructor)

 private:
  FILE* m_stream = nullptr;
};

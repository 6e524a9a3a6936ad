#pragma once

#include <cstdio>

#include "orvdiff/orvdiff_export.h"

/// Owns one open stdio stream and closes it exactly once. Not for two threads at a time.
class ORVDIFF_API OrvFileHandle {
 public:
  /// Opens `path` in stdio mode `mode`. A file that cannot be opened is no error here: the handle
  /// then holds null, as it does when either argument is null. For reading, only a regular file can
  /// be opened: no folder, and no pipe, which might keep the caller waiting for ever; and where the
  /// machine has no memory or descriptors left, `VELStdExceptionError` says so.
  OrvFileHandle(const char* path, const char* mode);

  /// Adopts an open stream, or null.
  explicit OrvFileHandle(FILE* stream);

  /// Closes the stream; never throws.
  virtual ~OrvFileHandle();

  OrvFileHandle(const OrvFileHandle&) = delete;
  OrvFileHandle& operator=(const OrvFileHandle&) = delete;

  /// The stream, or null when nothing is open. It stays owned by the handle.
  operator FILE*() const { return m_stream; }  // NOLINT(google-explicit-constructor)

 private:
  FILE* m_stream = nullptr;
};

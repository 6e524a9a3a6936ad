#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orvdiff::host {

/// A file read as raw bytes. Closed by the destructor; not copied; one thread at a time.
class VELFmFile {
 public:
  enum CreateMode {
    eOpenExisting = 3,  ///< for reading; the file must exist
  };

  VELFmFile() = default;
  ~VELFmFile();
  VELFmFile(const VELFmFile&) = delete;
  VELFmFile& operator=(const VELFmFile&) = delete;

  /// Opens a file with mode `eOpenExisting` and flag 1. Returns non-zero on success. Only a regular
  /// file can be opened: not a folder, and not a pipe, which might block forever. Raises
  /// `VELStdExceptionError` if the process has run out of memory or descriptors: the file is not
  /// missing then.
  int open(const char* name, int createMode, int flag);

  /// Size in bytes when the file was opened.
  std::uint64_t getLength() const { return m_length; }

  /// Reads up to `count` bytes; fewer only at the end of the file or after a read error. Raises
  /// `VELStdExceptionError` when the machine lacks memory for it.
  std::size_t read(char* buffer, std::size_t count);

  /// Whether a read met an error rather than the end of the file.
  bool hasFailed() const { return m_failed; }

  /// Turns the open file into a stream that reads it from its start and that the caller closes.
  /// Null if nothing is open. Raises `VELStdExceptionError` if no memory is left, or if the file
  /// cannot be rewound.
  FILE* releaseStream();

  void close();

 private:
  [[noreturn]] void raise(const char* whatFailed, int code) const;

  std::string m_name;
  int m_descriptor = -1;
  std::uint64_t m_length = 0;
  bool m_failed = false;
};

}  // namespace orvdiff::host

using orvdiff::host::VELFmFile;

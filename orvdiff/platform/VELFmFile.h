#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

/// A file as raw bytes. Closed by the destructor; not copied; one thread at a time.
class VELFmFile {
 public:
  enum CreateMode {
    eCreateNew = 1,         ///< for writing; fails when the name is taken, be it by a link
    eCreateForWriting = 2,  ///< afterwards the file holds exactly the bytes written
    eOpenExisting = 3,      ///< for reading; the file must exist
  };

  VELFmFile() = default;
  ~VELFmFile();
  VELFmFile(const VELFmFile&) = delete;
  VELFmFile& operator=(const VELFmFile&) = delete;

  /// Non-zero on success. Only a regular file can be opened for reading: no folder, and no pipe,
  /// which might keep the caller waiting for ever. `flag` is 1 for reading, 0 for writing. Raises
  /// `VELStdExceptionError` when a file for reading cannot be opened for lack of memory or
  /// descriptors: it is not the file that is missing then.
  int open(const char* name, int createMode, int flag);

  /// Size in bytes when the file was opened.
  std::uint64_t getLength() const { return m_length; }

  /// Reads up to `count` bytes; fewer only at the end of the file or after a read error. Raises
  /// `VELStdExceptionError` when the machine lacks memory for it.
  std::size_t read(char* buffer, std::size_t count);

  /// Whether a read met an error rather than the end of the file.
  bool hasFailed() const { return m_failed; }

  /// Writes `count` bytes; fewer only after a write error, such as a full disk.
  std::size_t write(const char* bytes, std::size_t count);

  /// Hands an open file over as a stream that reads it from its start, to be closed by the caller.
  /// Null when nothing is open. Raises `VELStdExceptionError` when no memory is left, or when the
  /// file does not go back to its start.
  FILE* releaseStream();

  /// False when the system reports only now that written bytes did not reach the file.
  bool close();

 private:
  [[noreturn]] void raise(const char* whatFailed, int code) const;

  std::string m_name;
  int m_descriptor = -1;
  std::uint64_t m_length = 0;
  bool m_failed = false;
};

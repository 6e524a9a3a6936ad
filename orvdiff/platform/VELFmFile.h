#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orvdiff::host {

/// A file as raw bytes. Closed by the destructor; not copied; one thread at a time.
class VELFmFile {
 public:
  enum CreateMode {
    eCreateNew = 1,         ///< for writing; fails if the name exists, even as a link
    eCreateForWriting = 2,  ///< afterwards the file holds exactly the bytes written
    eOpenExisting = 3,      ///< for reading; the file must exist
  };

  VELFmFile() = default;
  ~VELFmFile();
  VELFmFile(const VELFmFile&) = delete;
  VELFmFile& operator=(const VELFmFile&) = delete;

  /// Non-zero on success. Only a regular file can be opened for reading: not a folder, nor a
  /// pipe, which could block the caller forever. `flag` is 1 for reading, 0 for writing. Raises
  /// `VELStdExceptionError` when a file for reading cannot be opened for lack of memory or
  /// descriptors, since the file is not missing then.
  int open(const char* name, int createMode, int flag);

  /// Size in bytes when the file was opened.
  std::uint64_t getLength() const { return m_length; }

  /// Reads up to `count` bytes; fewer only at the end of the file or after a read error.
  std::size_t read(char* buffer, std::size_t count);

  /// Whether a read met an error rather than the end of the file.
  bool hasFailed() const { return m_failed; }

  /// Writes `count` bytes; fewer only after a write error, such as a full disk.
  std::size_t write(const char* bytes, std::size_t count);

  /// Turns the open file into a stream that reads from its start; the caller closes it. Null if
  /// nothing is open. Raises `VELStdExceptionError` if memory runs out or the file cannot be
  /// rewound.
  FILE* releaseStream();

  /// False if the system reports only now that written bytes did not reach the file.
  bool close();

 private:
  [[noreturn]] void raise(const char* whatFailed, int code) const;

  std::string m_name;
  int m_descriptor = -1;
  std::uint64_t m_length = 0;
  bool m_failed = false;
};

}  // namespace orvdiff::host

using orvdiff::host::VELFmFile;

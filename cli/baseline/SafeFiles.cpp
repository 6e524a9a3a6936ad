#include "cli/baseline/SafeFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "orvdiff/platform/OrvWholeFile.h"

namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

/// A descriptor that is closed at the end, unless it was before.
class OpenFile {
 public:
  OpenFile(const std::string& path, int flags, mode_t mode = 0)
      : m_number(open(path.c_str(), flags | O_CLOEXEC, mode)) {}
  ~OpenFile() {
    if (m_number >= 0) {
      close(m_number);
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool isOpen() const { return m_number >= 0; }
  int number() const { return m_number; }

  /// Some errors show only now.
  std::error_code finish() {
    const int number = m_number;
    m_number = -1;
    return close(number) == 0 ? std::error_code() : lastError();
  }

 private:
  int m_number;
};

/// The owner first: changing it takes away bits of the mode.
std::error_code inherit(int descriptor, std::optional<mode_t> mode, const struct stat* former) {
  if (former != nullptr && (former->st_uid != geteuid() || former->st_gid != getegid())) {
    [[maybe_unused]] const int owned = fchown(descriptor, former->st_uid, former->st_gid);
  }
  return !mode || fchmod(descriptor, *mode) == 0 ? std::error_code() : lastError();
}

}  // namespace

std::error_code writeTemporary(const std::string& path, std::string_view bytes,
                               std::optional<mode_t> mode, const struct stat* former) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL;
  std::optional<OpenFile> file(std::in_place, path, kFlags, 0666);
  if (!file->isOpen() && errno == EEXIST && unlink(path.c_str()) == 0) {
    file.emplace(path, kFlags, 0666);
  }
  if (!file->isOpen()) {
    return lastError();
  }
  std::error_code error = OrvWholeFile::writeAll(file->number(), bytes);
  if (!error) {
    error = inherit(file->number(), mode, former);
  }
  const std::error_code closing = file->finish();
  error = error ? error : closing;
  if (error) {
    unlink(path.c_str());
  }
  return error;
}

std::error_code flushToDisk(const std::string& path) {
  const OpenFile file(path, O_RDONLY);
  return file.isOpen() && fsync(file.number()) == 0 ? std::error_code() : lastError();
}

std::error_code moveFile(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : lastError();
}

std::error_code removeFile(const std::string& path) {
  return unlink(path.c_str()) == 0 ? std::error_code() : lastError();
}

void removeEmptyFolders(const std::vector<std::string>& folders) {
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    rmdir(folder->c_str());
  }
}

std::string readWhole(const std::string& path, std::error_code& error) {
  constexpr std::size_t kBlock = 4096;
  std::string bytes;
  error = {};
  const OpenFile file(path, O_RDONLY | O_NONBLOCK);  // a pipe must not keep the program waiting
  struct stat status = {};
  if (!file.isOpen() || fstat(file.number(), &status) != 0) {
    error = lastError();
    return bytes;
  }
  if (!S_ISREG(status.st_mode)) {
    error = std::make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                         : std::errc::invalid_argument);
    return bytes;
  }
  // One byte more than there should be, so that one call reads all of a file that does not grow.
  std::size_t length = 0;
  for (ssize_t step = 1; step != 0;) {
    bytes.resize(std::max(static_cast<std::size_t>(status.st_size) + 1, length + kBlock));
    step = read(file.number(), bytes.data() + length, bytes.size() - length);
    if (step < 0 && errno != EINTR) {
      error = lastError();
      return {};
    }
    length += step > 0 ? static_cast<std::size_t>(step) : 0;
  }
  bytes.resize(length);
  return bytes;
}

std::string folderAbove(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

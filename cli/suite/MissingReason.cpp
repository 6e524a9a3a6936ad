#include "cli/suite/MissingReason.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

bool isThere(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

std::string whyNotFound(const std::string& path, int error) {
  if (error != ENOENT && error != ENOTDIR) {
    return "cannot be reached: " + std::generic_category().message(error);
  }
  if (isThere(path)) {
    return "is a dangling link";
  }
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() || isThere(folder) ? "does not exist"
                                           : "does not exist, nor does its folder";
}

/// Reads the file again for the sake of the system's error message.
std::string whyNotReadable(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return "cannot be opened: " + std::generic_category().message(errno);
  }
  std::array<char, 65536> block;
  ssize_t count = 1;
  while (count > 0) {
    count = read(file, block.data(), block.size());
  }
  const int error = errno;
  close(file);
  return count < 0 ? "cannot be read: " + std::generic_category().message(error)
                   : "could not be read at first, but can be now";
}

}  // namespace

std::string missingReason(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    return whyNotFound(path, errno);
  }
  if (S_ISDIR(status.st_mode)) {
    return "is a folder";
  }
  if (access(path.c_str(), R_OK) != 0) {
    return "cannot be read: " + std::generic_category().message(errno);
  }
  return S_ISREG(status.st_mode) ? whyNotReadable(path) : "is not a regular file";
}

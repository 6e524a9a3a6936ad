#include "cli/system/WholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t step = write(descriptor, text.data(), text.size());
    if (step < 0 && errno != EINTR) {
      return lastError();
    }
    text.remove_prefix(step > 0 ? static_cast<std::size_t>(step) : 0);
  }
  return {};
}

/// Closes `descriptor`. Returns `error`, or if there was none, the error from closing.
std::error_code closeAfter(std::error_code error, int descriptor) {
  return close(descriptor) != 0 && !error ? lastError() : error;
}

/// Copies owner and permissions, ignoring errors: some file systems have none.
void inherit(int descriptor, const struct stat& former) {
  constexpr mode_t kPermissions = 0777;
  [[maybe_unused]] const int owned = fchown(descriptor, former.st_uid, former.st_gid);
  fchmod(descriptor, former.st_mode & kPermissions);
}

/// A new file in the folder of `path`, with default permissions.
struct TemporaryFile {
  explicit TemporaryFile(const std::string& path) {
    static unsigned int count = 0;
    const std::string start =
        path.substr(0, path.rfind('/') + 1) + ".orvdiff-" + std::to_string(getpid()) + '-';
    do {  // another process with this ID may have left the name, or use it on another host
      name = start + std::to_string(++count);
      descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);
  }

  std::string name;
  int descriptor;
};

}  // namespace

std::error_code writeWholeFile(const std::string& path, std::string_view text,
                               const struct stat* former) {
  const TemporaryFile temporary(path);
  if (temporary.descriptor < 0) {
    return lastError();
  }
  if (former != nullptr) {
    inherit(temporary.descriptor, *former);
  }
  std::error_code error = closeAfter(writeAll(temporary.descriptor, text), temporary.descriptor);
  if (!error && std::rename(temporary.name.c_str(), path.c_str()) != 0) {
    error = lastError();
  }
  if (error) {
    unlink(temporary.name.c_str());
  }
  return error;
}

std::error_code writeInPlace(const std::string& path, std::string_view text) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  if (descriptor < 0) {
    return lastError();
  }
  const std::error_code error = closeAfter(writeAll(descriptor, text), descriptor);
  if (error && truncate(path.c_str(), 0) != 0) {
    unlink(path.c_str());
  }
  return error;
}

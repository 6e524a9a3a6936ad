#include "orvdiff/platform/OrvWholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <new>

#include "orvdiff/platform/VELFmDir.h"

namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

OrvWholeFile::Pieces onePiece(std::string_view bytes) {
  return [bytes](const auto& take) { take(bytes); };
}

/// Writes everything and closes the file; some errors show only when it is closed.
std::error_code writeAndClose(int descriptor, const OrvWholeFile::Pieces& pieces) {
  std::error_code error;
  try {
    pieces([&](std::string_view piece) {
      if (!error) {
        error = OrvWholeFile::writeAll(descriptor, piece);
      }
    });
  } catch (const std::bad_alloc&) {
    error = std::make_error_code(std::errc::not_enough_memory);
  }
  return close(descriptor) != 0 && !error ? lastError() : error;
}

/// Takes over owner and permissions as far as user and file system allow.
void inherit(int descriptor, const struct stat& former) {
  constexpr mode_t kPermissions = 0777;
  [[maybe_unused]] const int owned = fchown(descriptor, former.st_uid, former.st_gid);
  fchmod(descriptor, former.st_mode & kPermissions);
}

/// A new file beside `path`, with the permissions of any new file.
struct TemporaryFile {
  explicit TemporaryFile(const std::string& path) {
    static std::atomic<unsigned int> count = 0;
    const std::string start =
        path.substr(0, path.rfind('/') + 1) + ".orvdiff-" + std::to_string(getpid()) + '-';
    do {  // a process with this number, on another machine or killed, may have left the name
      name = start + std::to_string(++count);
      descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);
  }

  std::string name;
  int descriptor;
};

std::error_code fillAndRename(const TemporaryFile& temporary, const std::string& name,
                              const OrvWholeFile::Pieces& pieces, const struct stat* former) {
  if (former != nullptr) {
    inherit(temporary.descriptor, *former);
  }
  std::error_code error = writeAndClose(temporary.descriptor, pieces);
  if (!error && std::rename(temporary.name.c_str(), name.c_str()) != 0) {
    error = lastError();
  }
  if (error) {
    unlink(temporary.name.c_str());
  }
  return error;
}

std::error_code fillInPlace(int descriptor, const std::string& name,
                            const OrvWholeFile::Pieces& pieces) {
  const std::error_code error = writeAndClose(descriptor, pieces);
  if (error && truncate(name.c_str(), 0) != 0) {
    VELFmDir::discardFile(name.c_str());
  }
  return error;
}

}  // namespace

std::error_code OrvWholeFile::writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t step = ::write(descriptor, bytes.data(), bytes.size());
    if (step < 0 && errno != EINTR) {
      return lastError();
    }
    bytes.remove_prefix(step > 0 ? static_cast<std::size_t>(step) : 0);
  }
  return {};
}

std::error_code OrvWholeFile::replace(const std::string& name, std::string_view bytes,
                                      const struct stat* former) {
  return replace(name, onePiece(bytes), former);
}

std::error_code OrvWholeFile::replace(const std::string& name, const Pieces& pieces,
                                      const struct stat* former) {
  const TemporaryFile temporary(name);
  return temporary.descriptor >= 0 ? fillAndRename(temporary, name, pieces, former) : lastError();
}

std::error_code OrvWholeFile::overwrite(const std::string& name, std::string_view bytes) {
  return overwrite(name, onePiece(bytes));
}

std::error_code OrvWholeFile::overwrite(const std::string& name, const Pieces& pieces) {
  const int descriptor = open(name.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  return descriptor >= 0 ? fillInPlace(descriptor, name, pieces) : lastError();
}

bool OrvWholeFile::write(const std::string& name, std::string_view bytes) {
  struct stat former = {};
  const bool exists = lstat(name.c_str(), &former) == 0;
  const bool isFile = exists && S_ISREG(former.st_mode);
  if (isFile && access(name.c_str(), W_OK) != 0) {
    return false;
  }
  if (!exists || isFile || S_ISLNK(former.st_mode)) {
    const TemporaryFile temporary(name);
    if (temporary.descriptor >= 0) {
      if (fillAndRename(temporary, name, onePiece(bytes), isFile ? &former : nullptr)) {
        VELFmDir::discardFile(name.c_str());
      }
      return true;
    }
  }
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) {
    return false;
  }
  if (fillInPlace(descriptor, name, onePiece(bytes))) {
    VELFmDir::discardFile(name.c_str());
  }
  return true;
}

#include "orvdiff/platform/VELFmDir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "orvdiff/platform/OrvSystemError.h"

namespace orvdiff::host {

using detail::OrvSystemError;

void VELFmDir::splitPath(const char* path, std::string* folder, std::string* file) {
  const std::string_view whole(path);
  const std::size_t separator = whole.rfind('/');
  const bool hasFolder = separator != std::string_view::npos;
  if (folder != nullptr) {
    const std::size_t end = separator == 0 ? 1 : separator;
    *folder = hasFolder ? whole.substr(0, end) : std::string_view();
  }
  if (file != nullptr) {
    *file = hasFolder ? whole.substr(separator + 1) : whole;
  }
}

void VELFmDir::joinPath(std::string& path, const char* component) {
  if (!path.empty() && path.back() != '/') {
    path += '/';
  }
  path += component;
}

namespace {

/// The owner's permission bits decide for the owner, so the common case saves a system call.
bool mayRead(const char* path, const struct stat& status) {
  const bool asOwner = (status.st_mode & S_IRUSR) != 0 && status.st_uid == getuid();
  return asOwner || access(path, R_OK) == 0;
}

}  // namespace

int VELFmDir::exists(const char* path, unsigned short mode) {
  struct stat status = {};
  if (stat(path, &status) != 0) {
    const int code = errno;
    if (OrvSystemError::isOfMachine(code)) {
      OrvSystemError::raise("Cannot tell whether " + std::string(path) + " exists", code, VEL_HERE);
    }
    return 0;
  }
  const bool kindFits = ((mode & eRegularFile) == 0 || S_ISREG(status.st_mode)) &&
                        ((mode & eFolder) == 0 || S_ISDIR(status.st_mode));
  const bool granted = (mode & eReadable) == 0 || mayRead(path, status);
  return kindFits && granted ? 1 : 0;
}

bool VELFmDir::isUnreadableEntry(const char* path) {
  struct stat status = {};
  return lstat(path, &status) == 0 && exists(path, eRegularFile | eReadable) == 0;
}

void VELFmDir::discardFile(const char* path) {
  struct stat status = {};
  if (lstat(path, &status) == 0 && S_ISREG(status.st_mode)) {
    unlink(path);
  }
}

bool VELFmDir::createRecursiveDir(const char* path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return exists(path, eFolder) != 0;
}

bool VELFmDir::setEffectiveWorkingDir(const char* path) {
  return chdir(path) == 0;
}

}  // namespace orvdiff::host

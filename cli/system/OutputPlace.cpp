#include "cli/system/OutputPlace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/system/CommandError.h"

namespace {

std::string messageOf(int error) {
  return std::generic_category().message(error);
}

/// Whether the error means that the folder is not writable or the file is a mount point.
bool cannotBeReplaced(std::error_code error) {
  return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
         error == std::errc::read_only_file_system || error == std::errc::device_or_resource_busy;
}

/// Resolves links. The file itself need not exist: another process may be replacing it right now.
std::string followLinks(const std::string& name) {
  constexpr int kMostLinks = 40;  // the kernel's own limit
  std::filesystem::path path = name;
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code noLink;
    const std::filesystem::path target = std::filesystem::read_symlink(path, noLink);
    if (noLink) {
      break;
    }
    path = path.parent_path() / target;
  }
  return path;
}

}  // namespace

OutputPlace::OutputPlace(const char* what, std::string name)
    : m_what(what), m_name(std::move(name)) {
  if (stat(m_name.c_str(), &m_status) == 0 && !isRegularFile()) {
    if (S_ISDIR(m_status.st_mode)) {
      refuse(messageOf(EISDIR));
    }
    return;  // opening a pipe waits for a reader, and closing it ends that reader's input
  }
  open();
  m_target = followLinks(m_name);
  for (const auto& [descriptor, stream] :
       {std::pair(STDOUT_FILENO, "standard output"), std::pair(STDERR_FILENO, "standard error")}) {
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && isSameFile(status)) {
      refuse(std::string(stream) + " is redirected to it");
    }
  }
}

/// Checks that the file can be written by opening it, creating it if needed. Keeps its contents.
void OutputPlace::open() {
  m_descriptor = ::open(m_name.c_str(), O_WRONLY | O_CLOEXEC);
  if (m_descriptor < 0 && errno == ENOENT) {
    m_descriptor = ::open(m_name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    m_isCreatedHere = m_descriptor >= 0;
  }
  if (m_descriptor < 0 || fstat(m_descriptor, &m_status) != 0) {
    refuse(messageOf(errno));
  }
}

OutputPlace::~OutputPlace() {
  struct stat now = {};
  if (m_isCreatedHere && stat(m_target.c_str(), &now) == 0 && isSameFile(now)) {
    unlink(m_target.c_str());
  }
  claim();
}

void OutputPlace::claim() {
  m_isCreatedHere = false;
  if (m_descriptor >= 0) {
    close(m_descriptor);
    m_descriptor = -1;
  }
}

void OutputPlace::clear() {
  claim();
  if (unlink(m_target.c_str()) != 0 && errno != ENOENT && truncate(m_target.c_str(), 0) != 0) {
    refuse(messageOf(errno));
  }
}

void OutputPlace::write(std::string_view text) const {
  write([text](const auto& take) { take(text); });
}

void OutputPlace::write(const OrvWholeFile::Pieces& pieces) const {
  std::error_code error = OrvWholeFile::replace(m_target, pieces, &m_status);
  if (cannotBeReplaced(error)) {
    error = OrvWholeFile::overwrite(m_target, pieces);
  }
  if (error) {
    throw CommandError(std::string("the ") + m_what + ' ' + m_name +
                       " could not be written completely: " + error.message());
  }
}

bool OutputPlace::isSameFile(const struct stat& other) const {
  return !S_ISCHR(m_status.st_mode) && m_status.st_dev == other.st_dev &&
         m_status.st_ino == other.st_ino;
}

void OutputPlace::requireDistinct(const std::vector<const OutputPlace*>& places) {
  for (auto one = places.begin(); one != places.end(); ++one) {
    for (auto other = places.begin(); other != one; ++other) {
      if ((*one)->isSameFile(**other)) {
        throw CommandError(std::string("the ") + (*other)->m_what + " and the " + (*one)->m_what +
                           " cannot both be " + (*one)->m_name);
      }
    }
  }
}

void OutputPlace::refuse(const std::string& reason) const {
  throw CommandError(std::string("the ") + m_what + ' ' + m_name + " cannot be written: " + reason);
}

#include "orvdiff/platform/VELFmFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "orvdiff/platform/OrvSystemError.h"

namespace {

/// Repeats `transfer` (a read or write of the bytes from an offset) until `count` bytes are done,
/// the file ends or an error stops it.
template <typename Transfer>
std::size_t transferAll(std::size_t count, Transfer transfer) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t step = transfer(done);
    if (step > 0) {
      done += static_cast<std::size_t>(step);
    } else if (step == 0 || errno != EINTR) {
      break;
    }
  }
  return done;
}

}  // namespace

VELFmFile::~VELFmFile() {
  close();
}

int VELFmFile::open(const char* name, int createMode, int /*flag*/) {
  close();
  m_name = name;
  m_failed = false;
  const bool writes = createMode != eOpenExisting;
  const int create = O_WRONLY | O_CREAT | (createMode == eCreateNew ? O_EXCL : O_TRUNC);
  // Without waiting: a pipe would not open before somebody else opens its other end.
  const int flags = writes ? create : O_RDONLY | O_NONBLOCK;
  m_descriptor = ::open(name, flags | O_CLOEXEC, 0666);
  struct stat status = {};
  const bool examined = m_descriptor >= 0 && fstat(m_descriptor, &status) == 0;
  if (!examined && !writes && OrvSystemError::isOfMachine(errno)) {
    raise("cannot be opened", errno);
  }
  if (!examined || (!writes && !S_ISREG(status.st_mode))) {
    close();
  }
  m_length = static_cast<std::uint64_t>(status.st_size);
  return m_descriptor >= 0 ? 1 : 0;
}

std::size_t VELFmFile::read(char* buffer, std::size_t count) {
  return transferAll(count, [&](std::size_t done) {
    const ssize_t step = ::read(m_descriptor, buffer + done, count - done);
    if (step < 0 && OrvSystemError::isOfMachine(errno)) {
      raise("cannot be read", errno);
    }
    m_failed = m_failed || (step < 0 && errno != EINTR);
    return step;
  });
}

std::size_t VELFmFile::write(const char* bytes, std::size_t count) {
  return transferAll(
      count, [&](std::size_t done) { return ::write(m_descriptor, bytes + done, count - done); });
}

FILE* VELFmFile::releaseStream() {
  if (m_descriptor < 0) {
    return nullptr;
  }
  const bool atStart = lseek(m_descriptor, 0, SEEK_SET) == 0;
  FILE* const stream = atStart ? fdopen(m_descriptor, "r") : nullptr;
  if (stream == nullptr) {
    raise("cannot be read from its start", errno);
  }
  m_descriptor = -1;
  return stream;
}

void VELFmFile::raise(const char* whatFailed, int code) const {
  OrvSystemError::raise("The file " + m_name + ' ' + whatFailed, code, VEL_HERE);
}

bool VELFmFile::close() {
  const int descriptor = m_descriptor;
  m_descriptor = -1;
  return descriptor < 0 || ::close(descriptor) == 0;
}

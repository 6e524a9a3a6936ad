#include "orvdiff/platform/VELFmFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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
  m_failed = false;
  const bool writes = createMode == eCreateForWriting;
  // Without waiting: a pipe would not open before somebody else opens its other end.
  const int flags = writes ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY | O_NONBLOCK;
  m_descriptor = ::open(name, flags | O_CLOEXEC, 0666);
  struct stat status = {};
  if (m_descriptor >= 0 &&
      (fstat(m_descriptor, &status) != 0 || (!writes && !S_ISREG(status.st_mode)))) {
    close();
  }
  m_length = static_cast<std::uint64_t>(status.st_size);
  return m_descriptor >= 0 ? 1 : 0;
}

std::size_t VELFmFile::read(char* buffer, std::size_t count) {
  return transferAll(count, [&](std::size_t done) {
    const ssize_t step = ::read(m_descriptor, buffer + done, count - done);
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
  lseek(m_descriptor, 0, SEEK_SET);
  FILE* const stream = fdopen(m_descriptor, "r");
  if (stream != nullptr) {
    m_descriptor = -1;
  }
  return stream;
}

bool VELFmFile::close() {
  const int descriptor = m_descriptor;
  m_descriptor = -1;
  return descriptor < 0 || ::close(descriptor) == 0;
}

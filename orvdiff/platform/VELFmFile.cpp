#include "orvdiff/platform/VELFmFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "orvdiff/platform/OrvSystemError.h"

namespace orvdiff::host {

using detail::OrvSystemError;

VELFmFile::~VELFmFile() {
  close();
}

int VELFmFile::open(const char* name, int /*createMode*/, int /*flag*/) {
  close();
  m_name = name;
  m_failed = false;
  m_descriptor = ::open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);  // a pipe must not block here
  struct stat status = {};
  const bool examined = m_descriptor >= 0 && fstat(m_descriptor, &status) == 0;
  if (!examined && OrvSystemError::isOfMachine(errno)) {
    raise("cannot be opened", errno);
  }
  if (!examined || !S_ISREG(status.st_mode)) {
    close();
  }
  m_length = static_cast<std::uint64_t>(status.st_size);
  return m_descriptor >= 0 ? 1 : 0;
}

std::size_t VELFmFile::read(char* buffer, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t step = ::read(m_descriptor, buffer + done, count - done);
    if (step > 0) {
      done += static_cast<std::size_t>(step);
    } else if (step < 0 && OrvSystemError::isOfMachine(errno)) {
      raise("cannot be read", errno);
    } else if (step == 0 || errno != EINTR) {
      m_failed = m_failed || step < 0;
      break;
    }
  }
  return done;
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

void VELFmFile::close() {
  if (m_descriptor >= 0) {
    ::close(m_descriptor);
    m_descriptor = -1;
  }
}

}  // namespace orvdiff::host

#include "cli/report/SummaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <system_error>

#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"

namespace {

using FileBuffer = __gnu_cxx::stdio_filebuf<char>;

int takeStandardOutput() {
  std::cout.flush();
  const int descriptor = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return descriptor;
}

bool isRegularFile(const OutputPlace* place) {
  return place != nullptr && place->isRegularFile();
}

/// Pipes, devices and standard output; for a file, a buffer that is not open.
FileBuffer openDirect(const OutputPlace* place) {
  if (isRegularFile(place)) {
    return FileBuffer();
  }
  const int descriptor =
      place == nullptr ? takeStandardOutput() : open(place->name().c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) {
    const std::string reason = std::generic_category().message(errno);
    place == nullptr ? throw CommandError("standard output: " + reason) : place->refuse(reason);
  }
  return FileBuffer(descriptor, std::ios::out);
}

}  // namespace

bool SummaryFile::isStandardOutput(const std::string& name) {
  struct stat named = {};
  struct stat standard = {};
  return name == "-" || (stat(name.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &standard) == 0 &&
                         !S_ISCHR(named.st_mode) && named.st_dev == standard.st_dev &&
                         named.st_ino == standard.st_ino);
}

SummaryFile::SummaryFile(OutputPlace* place)
    : m_place(place), m_direct(openDirect(place)), m_stream(nullptr) {
  if (isRegularFile(place)) {
    m_stream.rdbuf(&m_document);
    place->clear();
  } else {
    m_stream.rdbuf(&m_direct);
  }
  m_log.open(&m_stream);
}

void SummaryFile::finish() {
  m_log.close();
  deliver();
}

void SummaryFile::leaveUnfinished() {
  deliver();
}

void SummaryFile::deliver() {
  if (isRegularFile(m_place)) {
    if (!m_stream) {  // it swallows the exception of a buffer that cannot grow
      throw CommandError("the summary " + m_place->name() + " was not written: out of memory");
    }
    m_place->write(m_document.str());
    return;
  }
  const bool closed = m_direct.close() != nullptr;
  if (closed && m_stream) {
    return;
  }
  if (m_place == nullptr && isReaderGone()) {
    std::cout.setstate(std::ios::badbit);  // ends the program as with any other output
    return;
  }
  throw CommandError("the summary " + (m_place == nullptr ? "-" : m_place->name()) +
                     " could not be written completely; is the disk full?");
}

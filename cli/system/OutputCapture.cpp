#include "cli/system/OutputCapture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "cli/system/CommandError.h"

namespace {

/// Opens `descriptor` by calling `open`, unless it is open already.
template <typename Open>
void ensureOpen(int& descriptor, Open open) {
  if (descriptor < 0) {
    descriptor = open();
  }
  if (descriptor < 0) {
    throw CommandError("cannot capture the output of comparison scripts: " +
                       std::generic_category().message(errno));
  }
}

int duplicate(int descriptor) {
  return fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

}  // namespace

OutputCapture::Session::Session(OutputCapture& capture, bool scripts) : m_capture(capture) {
  if (scripts) {
    m_capture.openDescriptors();
  }
  m_capture.m_capturesScripts = scripts;
  m_capture.start();
}

OutputCapture::~OutputCapture() {
  stop();
  for (const int descriptor : {m_file, m_output, m_error}) {
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
}

void OutputCapture::openDescriptors() {
  ensureOpen(m_output, [] { return duplicate(STDOUT_FILENO); });
  ensureOpen(m_error, [] { return duplicate(STDERR_FILENO); });
  ensureOpen(m_file, [] { return memfd_create("orvdiff-output", MFD_CLOEXEC); });
}

void OutputCapture::start() {
  m_formerState = std::cout.rdstate();
  m_formerBuffer = std::cout.rdbuf(&m_text);
  if (m_capturesScripts) {
    dup2(m_file, STDOUT_FILENO);
    dup2(m_file, STDERR_FILENO);
  }
}

void OutputCapture::stop() {
  if (m_formerBuffer == nullptr) {
    return;
  }
  std::cout.rdbuf(m_formerBuffer);
  // Setting a buffer clears the state, and an earlier write error must not be forgotten. So far
  // nothing is printed before a capture starts; this is for the first caller that does.
  std::cout.setstate(m_formerState);
  m_formerBuffer = nullptr;
  if (m_capturesScripts) {
    dup2(m_output, STDOUT_FILENO);
    dup2(m_error, STDERR_FILENO);
  }
}

std::string OutputCapture::take() {
  std::string text;
  if (m_text.pubseekoff(0, std::ios::cur, std::ios::out) > 0) {
    text = m_text.str();
    m_text.str({});
  }
  return m_file < 0 ? text : text + takeFromFile();
}

/// Reads and empties the file. Scripts share its offset, so rewinding makes them start over.
std::string OutputCapture::takeFromFile() const {
  struct stat status = {};
  if (fstat(m_file, &status) != 0 || status.st_size == 0) {
    return {};
  }
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t filled = 0;
  ssize_t count = 1;
  while (count > 0 && filled < text.size()) {
    count = pread(m_file, &text[filled], text.size() - filled, static_cast<off_t>(filled));
    filled += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  text.resize(filled);
  if (ftruncate(m_file, 0) == 0) {
    lseek(m_file, 0, SEEK_SET);
  }
  return text;
}

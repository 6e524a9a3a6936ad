#include "cli/SummaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include "cli/Trouble.h"

namespace {

constexpr const char* kStandardOutput = "-";

int takeStandardOutput() {
  std::cout.flush();
  const int descriptor = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return descriptor;
}

int openSummary(const std::string& path) {
  const int descriptor = path == kStandardOutput
                             ? takeStandardOutput()
                             : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) {
    throw Trouble("the summary " + path +
                  " cannot be written: " + std::generic_category().message(errno));
  }
  return descriptor;
}

}  // namespace

SummaryFile::SummaryFile(std::string path)
    : m_path(std::move(path)), m_buffer(openSummary(m_path), std::ios::out), m_stream(&m_buffer) {
  m_log.open(&m_stream);
}

void SummaryFile::finish() {
  m_log.close();
  const bool closed = m_buffer.close() != nullptr;
  if (closed && m_stream) {
    return;
  }
  std::error_code ignored;  // what is no file of its own (a pipe, a link) is left alone
  if (m_path != kStandardOutput && std::filesystem::symlink_status(m_path, ignored).type() ==
                                       std::filesystem::file_type::regular) {
    std::filesystem::remove(m_path, ignored);
  }
  throw Trouble("the summary " + m_path + " could not be written to its end; is the disk full?");
}

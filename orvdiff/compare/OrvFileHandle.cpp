#include "orvdiff/compare/OrvFileHandle.h"

#include <sys/stat.h>

OrvFileHandle::OrvFileHandle(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    return;
  }
  m_stream = std::fopen(path, mode);
  struct stat status = {};
  if (m_stream != nullptr && fstat(fileno(m_stream), &status) == 0 && S_ISDIR(status.st_mode)) {
    // The C library opens folders for reading, and every read then fails.
    std::fclose(m_stream);
    m_stream = nullptr;
  }
}

OrvFileHandle::OrvFileHandle(FILE* stream) : m_stream(stream) {}

OrvFileHandle::~OrvFileHandle() {
  if (m_stream != nullptr) {
    std::fclose(m_stream);
  }
}

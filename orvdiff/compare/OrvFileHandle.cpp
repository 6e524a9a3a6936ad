#include "orvdiff/compare/OrvFileHandle.h"

#include <cstring>

#include "orvdiff/platform/VELFmFile.h"

OrvFileHandle::OrvFileHandle(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    return;
  }
  const bool onlyReads = mode[0] == 'r' && std::strchr(mode, '+') == nullptr;
  if (!onlyReads) {
    m_stream = std::fopen(path, mode);
    return;
  }
  VELFmFile file;
  if (file.open(path, VELFmFile::eOpenExisting, 1) != 0) {
    m_stream = file.releaseStream();
  }
}

OrvFileHandle::OrvFileHandle(FILE* stream) : m_stream(stream) {}

OrvFileHandle::~OrvFileHandle() {
  if (m_stream != nullptr) {
    std::fclose(m_stream);
  }
}

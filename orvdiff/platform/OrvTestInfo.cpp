#include "orvdiff/platform/OrvTestInfo.h"

namespace orvdiff::host {

OrvTestInfo::OrvTestInfo() = default;
OrvTestInfo::~OrvTestInfo() = default;

void OrvTestInfo::UnfreezeAndDelete::operator()(std::strstream* stream) const {
  stream->freeze(false);
  delete stream;
}

std::strstream& OrvTestInfo::addOutput(const std::string& fileName, bool binary) {
  Output& output = m_outputs[fileName];
  output.stream.reset(new std::strstream());
  output.binary = binary;
  *output.stream << std::ends;  // until the host writes, the text is empty, not arbitrary
  output.stream->seekp(0);
  return *output.stream;
}

bool OrvTestInfo::isOutputInMemory(const char* fileName) {
  return m_outputs.count(fileName) != 0;
}

std::strstream* OrvTestInfo::getOutputStream(const char* fileName, bool& binary) {
  const auto found = m_outputs.find(fileName);
  if (found == m_outputs.end()) {
    return nullptr;
  }
  binary = found->second.binary;
  return found->second.stream.get();
}

}  // namespace orvdiff::host

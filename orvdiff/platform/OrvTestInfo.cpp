#include "orvdiff/platform/OrvTestInfo.h"

OrvTestInfo::OrvTestInfo() = default;
OrvTestInfo::~OrvTestInfo() = default;

std::strstream& OrvTestInfo::addOutput(const std::string& fileName, bool binary) {
  Output& output = m_outputs[fileName];
  output = {std::make_unique<std::strstream>(), binary};
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

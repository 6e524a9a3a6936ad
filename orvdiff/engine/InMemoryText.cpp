#include "orvdiff/engine/InMemoryText.h"

#include <cstring>

InMemoryText::InMemoryText(std::strstream& stream) : m_stream(stream), m_text(stream.str()) {
  // A stream that only reads a buffer of the host's has written nothing: its count is 0.
  const auto written = static_cast<std::size_t>(stream.pcount());
  if (m_text == nullptr) {
    m_text = "";
  } else if (written > 0 && std::memchr(m_text, '\0', written) == nullptr) {
    m_copy.assign(m_text, written);
    m_text = m_copy.c_str();
  }
}

void InMemoryText::unfreeze() {
  m_stream.freeze(false);
}

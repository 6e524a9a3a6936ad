#pragma once

#include <string>

#include "orvdiff/platform/OrvStrStream.h"

/// The text of an in-memory output as a NUL-terminated string. Reading it freezes the stream's
/// buffer; whoever is done with the text unfreezes it (`unfreeze`), so that the host can go on
/// writing to the stream or free it.
///
/// The host ends a text with a NUL. Where it forgot to, the text ends with what was written, rather
/// than in whatever memory follows.
class InMemoryText {
 public:
  explicit InMemoryText(std::strstream& stream);

  const char* text() const { return m_text; }
  void unfreeze();

 private:
  std::strstream& m_stream;
  std::string m_copy;
  const char* m_text;
};

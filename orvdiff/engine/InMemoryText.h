#pragma once

#include <cstddef>
#include <string>

#include "orvdiff/platform/OrvStrStream.h"

/// How many bytes an in-memory output holds. What was written counts; a stream that was never
/// written to may be there to read a buffer of the host's, which then counts whole.
std::size_t heldLength(std::strstream& stream);

/// The text of an in-memory output as a NUL-terminated string. Reading it freezes the stream's
/// buffer; whoever is done with the text unfreezes it (`unfreeze`), so that the host can go on
/// writing to the stream or free it.
///
/// The host ends a text with a NUL, and may have gone back since, for instance to fill in a number.
/// Only where there is no NUL at all does the text end with what was written, rather than in
/// whatever memory follows.
class InMemoryText {
 public:
  explicit InMemoryText(std::strstream& stream);

  const char* text() const { return m_text; }
  void unfreeze();

 private:
  std::strstream& m_stream;
  std::string m_copy;
  const char* m_text = "";
};

#include "orvdiff/engine/InMemoryOutput.h"

#include <climits>
#include <cstddef>
#include <cstring>

// A strstream does not know how much of its memory holds output. All it has are the pointers of its
// get and put areas, which only derived classes may read. Hosts use streams in three ways:
//
// - They write to a stream that owns its memory. The bytes end at the put position; the memory
//   after it is reserved but not written.
// - They wrap a finished array of their own for reading. There is no put area; the bytes end where
//   the get area ends.
// - They wrap an array for writing that they have already filled. The put position is then 0, as in
//   a new, empty stream of the first kind. Only an attempt to write tells the two apart.

namespace {

/// The memory of a stream.
struct Areas {
  char* begin;
  char* read;
  char* readEnd;
  char* putBegin;
  char* put;  ///< null: there is no put area
  char* putEnd;

  /// Size of the memory. A stream that appends to a text in an array of the host's counts the size
  /// of the array from the end of that text.
  std::size_t reserved() const {
    return static_cast<std::size_t>(put != nullptr ? putEnd - putBegin : readEnd - begin);
  }
};

/// Reads the pointers that a stream's buffer shows only to derived classes: a pointer to a
/// protected member, named through a derived class, works on any object of the base.
class Peek : std::streambuf {
 public:
  static Areas areasOf(const std::streambuf& buffer) {
    return {(buffer.*&Peek::eback)(), (buffer.*&Peek::gptr)(), (buffer.*&Peek::egptr)(),
            (buffer.*&Peek::pbase)(), (buffer.*&Peek::pptr)(), (buffer.*&Peek::epptr)()};
  }

  /// Whether the memory is the stream's own, which grows, rather than an array of the host's. The
  /// areas cannot tell: a new stream looks like one that wraps an array of the size that it
  /// reserves. So this writes a byte while the buffer has no areas. For put position 0 only.
  static bool ownsMemory(std::strstreambuf& buffer, const Areas& areas) {
    struct Restore {
      ~Restore() {
        (buffer.*&Peek::setg)(areas.begin, areas.read, areas.readEnd);
        (buffer.*&Peek::setp)(areas.begin, areas.putEnd);
      }
      std::streambuf& buffer;
      const Areas& areas;
    } const restore{buffer, areas};
    buffer.freeze(false);  // frozen memory does not grow
    (buffer.*&Peek::setg)(nullptr, nullptr, nullptr);
    (buffer.*&Peek::setp)(nullptr, nullptr);
    const bool grows = buffer.sputc('\0') != std::streambuf::traits_type::eof();
    delete[](buffer.*&Peek::pbase)();  // a strstream has no allocation functions of its own
    return grows;
  }
};

std::size_t findNul(const char* begin, std::size_t size) {
  const void* const end = size != 0 ? std::memchr(begin, '\0', size) : nullptr;
  return end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - begin) : size;
}

std::size_t countBytes(const Areas& areas, std::strstreambuf& buffer) {
  if (areas.put == nullptr) {
    return static_cast<std::size_t>(areas.readEnd - areas.begin);
  }
  if (areas.put != areas.begin) {
    return static_cast<std::size_t>(areas.put - areas.begin);
  }
  if (Peek::ownsMemory(buffer, areas)) {
    return 0;
  }
  const std::size_t reserved = areas.reserved();
  const bool sizeIsKnown = reserved != INT_MAX;  // the standard's size for "unknown"
  return sizeIsKnown ? reserved : findNul(areas.begin, reserved);
}

}  // namespace

InMemoryOutput::InMemoryOutput(std::strstream& stream) : m_stream(stream) {
  std::strstreambuf& buffer = *stream.rdbuf();
  const Areas areas = Peek::areasOf(buffer);
  if (areas.begin == nullptr) {
    return;
  }
  m_bytes = std::string_view(areas.begin, countBytes(areas, buffer));
  // Reading extends the get area up to what has been written, and seeking back leaves it there: if
  // it ends after the bytes, the host has written more. But a host that sought to the end of the
  // memory has extended it up to that, which says nothing.
  m_isWhole = areas.readEnd <= areas.begin + m_bytes.size() || areas.readEnd == areas.putEnd;
  m_memory = std::string_view(areas.begin, areas.reserved());
  stream.freeze(true);
}

InMemoryOutput::~InMemoryOutput() {
  m_stream.freeze(false);
}

const char* InMemoryOutput::text() {
  if (findNul(m_memory.data(), m_memory.size()) < m_memory.size()) {
    return m_memory.data();
  }
  m_endedText = m_memory;
  return m_endedText.c_str();
}

void InMemoryOutput::rewind() {
  m_stream.rdbuf()->pubseekpos(0, std::ios::in);
  m_stream.clear();
}

#include "orvdiff/harness/MOXDump.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

namespace orvdiff::detail {

namespace {

constexpr std::uint32_t kRowBytes = 16;
constexpr int kRowLimit = 10;  // differing rows; more are rarely of use

/// One line of a row: a hex column and a character for each byte.
struct Line {
  std::string hex;
  std::string text;

  void append(const char* column, char character) {
    hex += column;
    text += character;
  }

  void appendByte(const unsigned char* bytes, std::uint32_t index) {
    if (bytes == nullptr) {
      hex = "  (null)";
      return;
    }
    const unsigned char byte = bytes[index];
    char column[8];
    std::snprintf(column, sizeof column, "  %02X", byte);
    append(column, byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.');
  }

  /// `bytes` is the length of the row; a short one is padded so that the characters line up.
  void write(std::ostream& out, const char* label, std::uint32_t bytes) const {
    out << label << hex << std::string(std::size_t{4} * (kRowBytes - bytes), ' ') << "     " << text
        << '\n';
  }
};

/// Offsets that fit are shown as `int`, so that a negative one has 32 bits; others in full.
void writeOffset(std::ostream& out, std::int64_t offset) {
  char line[64];
  if (offset >= INT32_MIN && offset <= INT32_MAX) {
    std::snprintf(line, sizeof line, "Offset: %#X (%d)\n", static_cast<unsigned>(offset),
                  static_cast<int>(offset));
  } else {
    std::snprintf(line, sizeof line, "Offset: %#" PRIX64 " (%" PRId64 ")\n",
                  static_cast<std::uint64_t>(offset), offset);
  }
  out << line;
}

/// Writes the row of `bytes` bytes that starts at `start`; returns how many of them differ.
std::uint32_t writeRow(std::ostream& out, const MOXDump& dump, std::uint32_t start,
                       std::uint32_t bytes) {
  Line actual;
  Line expected;
  Line marker;
  std::uint32_t unequal = 0;
  const bool comparable = dump.actual != nullptr && dump.expected != nullptr;
  for (std::uint32_t index = start; index < start + bytes; ++index) {
    actual.appendByte(dump.actual, index);
    expected.appendByte(dump.expected, index);
    if (comparable && dump.actual[index] == dump.expected[index]) {
      marker.append("    ", ' ');
    } else {
      marker.append("  ^^", '^');
      ++unequal;
    }
  }
  writeOffset(out, dump.baseOffset + start);
  actual.write(out, "  actual:", bytes);
  expected.write(out, "expected:", bytes);
  marker.write(out, "         ", bytes);
  return unequal;
}

}  // namespace

void MOXDump::write(std::ostream& out, bool everyRow) const {
  const bool comparable = actual != nullptr && expected != nullptr;
  std::uint32_t compared = 0;
  std::uint32_t unequal = 0;
  int differingRows = 0;
  while (compared < count && differingRows < kRowLimit) {
    const std::uint32_t bytes = std::min(kRowBytes, count - compared);
    // Most rows of two long blocks are equal: skip them without formatting.
    if (!comparable || std::memcmp(actual + compared, expected + compared, bytes) != 0) {
      unequal += writeRow(out, *this, compared, bytes);
      differingRows += comparable ? (everyRow ? 0 : 1) : kRowLimit;
    }
    compared += bytes;
  }
  char totals[80];
  std::snprintf(totals, sizeof totals, "%u bytes compared.  A total of %u bytes unequal\n",
                compared, unequal);
  out << totals;
}

}  // namespace orvdiff::detail

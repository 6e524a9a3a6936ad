#pragma once

#include <cstdint>
#include <ostream>

namespace orvdiff::detail {

/// Shows two blocks of bytes side by side where they differ.
struct MOXDump {
  const unsigned char* actual;    ///< may be null
  const unsigned char* expected;  ///< may be null
  std::uint32_t count;            ///< bytes in each block
  std::int64_t baseOffset;        ///< offset of the first byte, as the dump shows it

  /// Writes the differing rows of 16 bytes, then totals of the bytes compared. Stops after 10
  /// differing rows unless `everyRow`, and after the first row if a block is null.
  void write(std::ostream& out, bool everyRow) const;
};

}  // namespace orvdiff::detail

#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

#include "orvdiff/platform/VELAssert.h"

/// Whether two byte sources hold the same, in constant memory. A source is called as
/// `read(buffer, count)` and returns how many bytes it delivered, fewer than `count` only at its
/// end. With `untilNul`, both are texts, and what follows a NUL they have in common does not count.
template <typename ReadMaster, typename ReadActual>
bool haveEqualContents(ReadMaster readMaster, ReadActual readActual, bool untilNul) {
  constexpr std::size_t kBlockSize = std::size_t{64} << 10;
  const std::unique_ptr<char[]> blocks = velNewArray<char>(VEL_HERE, 2 * kBlockSize);
  char* const master = blocks.get();
  char* const actual = blocks.get() + kBlockSize;
  for (;;) {
    const std::size_t masterCount = readMaster(master, kBlockSize);
    const std::size_t actualCount = readActual(actual, kBlockSize);
    if (untilNul) {
      const std::size_t common = masterCount < actualCount ? masterCount : actualCount;
      const void* const nul = std::memchr(master, '\0', common);
      if (nul != nullptr) {
        const auto length = static_cast<std::size_t>(static_cast<const char*>(nul) - master);
        return std::memcmp(master, actual, length + 1) == 0;
      }
    }
    if (masterCount != actualCount || std::memcmp(master, actual, masterCount) != 0) {
      return false;
    }
    if (masterCount < kBlockSize) {
      return true;
    }
  }
}

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmFile.h"

/// Whether two byte sources have the same contents, in constant memory. A source is called as
/// `read(buffer, count)` and returns how many bytes it read, fewer than `count` only at its end or
/// after an error. `length` is the length of both if it is known, else 0; with a known length
/// neither is read to its end, and a source that turns out shorter is not equal. `observer`,
/// unless null, is told of the blocks that both have.
template <typename ReadMaster, typename ReadActual>
bool haveEqualContents(ReadMaster readMaster, ReadActual readActual, std::uint64_t length,
                       OrvComparisonObserver* observer) {
  constexpr std::uint64_t kLargestBlock = std::uint64_t{64} << 10;
  const std::uint64_t total = length > 0 ? length : UINT64_MAX;
  const auto blockSize = static_cast<std::size_t>(std::min(kLargestBlock, total));
  const std::unique_ptr<char[]> blocks = velNewArray<char>(VEL_HERE, 2 * blockSize);
  char* const master = blocks.get();
  char* const actual = blocks.get() + blockSize;
  for (std::uint64_t done = 0; done < total; done += blockSize) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(blockSize, total - done));
    const std::size_t masterCount = readMaster(master, wanted);
    const std::size_t actualCount = readActual(actual, wanted);
    if (masterCount != actualCount || std::memcmp(master, actual, masterCount) != 0) {
      return false;
    }
    if (observer != nullptr) {
      observer->sawEqualBlock({master, masterCount});
    }
    if (masterCount < wanted) {
      return length == 0;
    }
  }
  return true;
}

/// The same for two open files, from their current positions. Also false if one cannot be read;
/// that file's `hasFailed` is then true.
inline bool haveEqualContents(VELFmFile& master, VELFmFile& actual) {
  const auto reader = [](VELFmFile& file) {
    return [&file](char* block, std::size_t count) { return file.read(block, count); };
  };
  OrvComparisonObserver* const observer = OrvComparisonObserver::current();
  const bool areEqual =
      master.getLength() == actual.getLength() &&
      haveEqualContents(reader(master), reader(actual), master.getLength(), observer) &&
      !master.hasFailed() && !actual.hasFailed();
  if (areEqual && observer != nullptr) {
    observer->sawEqualFiles();
  }
  return areEqual;
}

#pragma once

#include <cstdint>

namespace orvdiff::host {

/// The memory use of this process.
struct VELUtMemory {
  /// Bytes of the heap that are in use, by the allocator's own count; where the allocator does
  /// not count, the resident set size, which changes in whole pages. The allocator counts small
  /// freed blocks as in use while it caches them for the same thread.
  static std::uint64_t getMemoryConsumption();
};

}  // namespace orvdiff::host

using orvdiff::host::VELUtMemory;

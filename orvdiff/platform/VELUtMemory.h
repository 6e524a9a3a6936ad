#pragma once

#include <cstdint>

/// What the process costs in memory.
struct VELUtMemory {
  /// Bytes of the heap that are in use, by the allocator's own count; where the allocator keeps
  /// none, the process's resident set size, which moves in whole pages. The allocator counts small
  /// freed blocks as in use while it keeps them ready for the same thread.
  static std::uint64_t getMemoryConsumption();
};

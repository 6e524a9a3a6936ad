#pragma once

#include <cstdint>

/// Checked narrowing of sizes.
struct VELDowncastSize {
  /// `value` as 32 bits; raises `VELAssertError` with `sourceUnit` and `line` when it does not fit,
  /// because a truncated length would make a comparison pass on part of its data.
  static std::uint32_t uint32(std::uint64_t value, const char* sourceUnit, int line);
};

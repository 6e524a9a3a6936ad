#pragma once

#include <cstdint>

namespace orvdiff::host {

/// Checked narrowing of sizes.
struct VELDowncastSize {
  /// `value` as 32 bits; raises `VELAssertError` with `sourceUnit` and `line` when it does not fit,
  /// because with a truncated length a comparison could pass on part of its data.
  static std::uint32_t uint32(std::uint64_t value, const char* sourceUnit, int line);
};

}  // namespace orvdiff::host

using orvdiff::host::VELDowncastSize;

#include "orvdiff/platform/VELDowncastSize.h"

#include "orvdiff/platform/VELAssert.h"

namespace orvdiff::host {

std::uint32_t VELDowncastSize::uint32(std::uint64_t value, const char* sourceUnit, int line) {
  const VELPlace place{sourceUnit, line};
  VEL_ASSERT_AT(value <= UINT32_MAX, place);
  return static_cast<std::uint32_t>(value);
}

}  // namespace orvdiff::host

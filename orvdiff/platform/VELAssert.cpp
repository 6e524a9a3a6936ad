#include "orvdiff/platform/VELAssert.h"

#include <string_view>

namespace orvdiff::host {

std::string VELPlace::unit() const {
  std::string_view name(file);
  name.remove_prefix(name.rfind('/') + 1);  // npos + 1 is 0: no folder, nothing to remove
  return std::string(name.substr(0, name.find('.')));
}

void velRaiseAssertion(const char* text, const VELPlace& place) {
  throw VELAssertError(text, place.unit(), place.line);
}

}  // namespace orvdiff::host

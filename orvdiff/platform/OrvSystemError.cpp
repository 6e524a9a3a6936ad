#include "orvdiff/platform/OrvSystemError.h"

#include <cerrno>
#include <system_error>

namespace orvdiff::detail {

bool OrvSystemError::isOfMachine(int code) {
  return code == EMFILE || code == ENFILE || code == ENOMEM;
}

void OrvSystemError::raise(const std::string& sentence, int code, const VELPlace& place) {
  throw VELStdExceptionError(std::system_error(code, std::generic_category(), sentence),
                             place.unit(), place.line);
}

}  // namespace orvdiff::detail

#include "orvdiff/platform/VELErrors.h"

#include <utility>

namespace orvdiff::host {

VELThrowable::VELThrowable(std::string text, const std::string& unit, int line)
    : m_text(std::move(text)), m_backTrace{{unit, line, "VEL_THROW"}} {
  describe();
}

VELThrowable::~VELThrowable() = default;

const char* VELThrowable::what() const noexcept {
  return m_what.c_str();
}

void VELThrowable::addBackTraceEntry(const std::string& unit, int line, const std::string& tag) {
  m_backTrace.push_back({unit, line, tag});
  describe();
}

void VELThrowable::describe() {
  m_what = m_text + " [";
  const char* separator = "";
  for (const VELBackTraceEntry& entry : m_backTrace) {
    m_what += separator + entry.unit + ':' + std::to_string(entry.line) + ", " + entry.tag;
    separator = "; ";
  }
  m_what += ']';
}

VELAssertError::~VELAssertError() = default;

VELOutOfMemoryError::VELOutOfMemoryError(const std::string& unit, int line)
    : VELThrowable("Out of memory", unit, line) {}

VELOutOfMemoryError::~VELOutOfMemoryError() = default;

VELStdExceptionError::VELStdExceptionError(const std::exception& wrapped, const std::string& unit,
                                           int line)
    : VELThrowable(wrapped.what(), unit, line) {}

VELStdExceptionError::~VELStdExceptionError() = default;

}  // namespace orvdiff::host

#pragma once

#include <cstddef>
#include <string>

#include "orvdiff/platform/VELByteBuffer.h"

namespace orvdiff::host {

/// Small text services of the host.
struct OrvHelper {
  /// Splits `fileName` at its last dot; the extension excludes the dot. A name whose only dot comes
  /// first (".profile") is all base.
  static void fileBasename(const std::string& fileName, std::string& base, std::string& extension);

  /// Appends `length` bytes of UTF-8 text as XML character data: & < > " ' become entity
  /// references. Characters that XML 1.0 forbids (most control characters) and invalid UTF-8 become
  /// U+FFFD, so the document is well-formed whatever a file name contains.
  static void xmlEncode(const char* text, std::size_t length, VELByteBuffer& buffer);
};

}  // namespace orvdiff::host

using orvdiff::host::OrvHelper;

#pragma once

#include <cstddef>
#include <string>

#include "orvdiff/platform/VELByteBuffer.h"

/// Small text services of the host.
struct OrvHelper {
  /// Cuts `fileName` at its last dot. The extension is without the dot; a name whose only dot comes
  /// first (".profile") is all base.
  static void fileBasename(const std::string& fileName, std::string& base, std::string& extension);

  /// Appends `length` bytes of UTF-8 text as XML character data: & < > " ' become entity
  /// references, and whatever XML 1.0 forbids (most control characters) or is no valid UTF-8
  /// becomes U+FFFD, so that the document stays well-formed whatever a file name holds.
  static void xmlEncode(const char* text, std::size_t length, VELByteBuffer& buffer);
};

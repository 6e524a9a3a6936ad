#pragma once

#include <string>

#include "orvdiff/platform/VELAssert.h"

namespace orvdiff::detail {

/// Judging and reporting a failed system call.
struct OrvSystemError {
  /// Whether `code`, an `errno`, is about the machine (out of memory or descriptors) rather than
  /// the file, which may be fine and must not be reported as missing.
  static bool isOfMachine(int code);

  /// Raises `VELStdExceptionError` with the text `sentence` + ": " + the system's text for `code`.
  /// The sentence names the file and what could not be done.
  [[noreturn]] static void raise(const std::string& sentence, int code, const VELPlace& place);
};

}  // namespace orvdiff::detail

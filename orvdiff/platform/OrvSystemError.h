#pragma once

#include <string>

#include "orvdiff/platform/VELAssert.h"

/// What to do about a system call that failed.
struct OrvSystemError {
  /// Whether `code`, an `errno`, is about the machine (no memory or descriptors left) rather than
  /// about the file, which may be perfectly all right and must not be taken for a missing one.
  static bool isOfMachine(int code);

  /// Raises `VELStdExceptionError` with the text `sentence` + ": " + the system's words for `code`.
  /// The sentence names the file and what could not be done.
  [[noreturn]] static void raise(const std::string& sentence, int code, const VELPlace& place);
};

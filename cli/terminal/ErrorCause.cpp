#include "cli/terminal/ErrorCause.h"

#include <iterator>
#include <new>
#include <stdexcept>

#include "orvdiff/platform/VELErrors.h"

namespace {

constexpr const char* kOutOfMemory = "out of memory";

/// Assertions of the library that a user's file or text can trip, each recognised by a part of its
/// text. All other assertions catch bugs in the calling program.
constexpr struct {
  const char* piece;
  const char* cause;
} kAssertions[] = {
    {"Files of 2 GiB or more", "files of 2 GiB or more cannot be compared"},
    {"Unable to read all of the contents", "a file could not be read completely"},
    {"Replacement using regular expression failed",
     "a normalisation pattern could not be applied to the text"},
    {"setText failed", "the text could not be prepared for normalisation"},
    {"Regular expression compiled", "a normalisation pattern could not be compiled"},
    {"The encoding is known", "a required character encoding is not available"},
    {"The text is too long", "the text is too long to convert"},
    {"The text was converted", "the text could not be converted to UTF-16"},
    {"UINT32_MAX", "the file is too large"},
    {"bFileOpened", "an output file could not be opened for writing"},
};

bool isMacroCall(const std::string& text) {
  return text.rfind("VEL_ASSERT", 0) == 0;
}

std::string causeOfAssertion(const std::string& text) {
  for (const auto& [piece, cause] : kAssertions) {
    if (text.find(piece) != std::string::npos) {
      return cause;
    }
  }
  return "an internal check of the library failed (use -v for details)";
}

std::string causeWithoutSource(const std::exception& error) {
  if (dynamic_cast<const VELOutOfMemoryError*>(&error) != nullptr ||
      dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return kOutOfMemory;
  }
  if (dynamic_cast<const std::length_error*>(&error) != nullptr) {
    return "the text is too large for memory";
  }
  if (const auto* const raised = dynamic_cast<const VELThrowable*>(&error)) {
    return isMacroCall(raised->getText()) ? causeOfAssertion(raised->getText()) : raised->getText();
  }
  return error.what();
}

}  // namespace

std::string causeOf(const std::exception& error, Verbosity verbosity) {
  std::string cause = causeWithoutSource(error);
  if (verbosity == Verbosity::Verbose && cause != error.what()) {
    cause += std::string(" [") + error.what() + ']';
  }
  return cause;
}

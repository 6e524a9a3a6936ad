#include "cli/terminal/ErrorCause.h"

#include <iterator>
#include <new>
#include <stdexcept>

#include "orvdiff/platform/VELErrors.h"

namespace {

constexpr const char* kOutOfMemory = "out of memory";

/// What the library's assertions on files and texts mean to those whose files and texts they are,
/// by a piece of the assertion. All others guard against mistakes of the calling program.
constexpr struct {
  const char* piece;
  const char* cause;
} kAssertions[] = {
    {"Files of 2 GiB or more", "files of 2 GiB or more cannot be compared"},
    {"Unable to read all of the contents", "a file could not be read to its end"},
    {"Replacement using regular expression failed",
     "a normalisation pattern could not cope with the text"},
    {"setText failed", "the text could not be prepared for normalisation"},
    {"Regular expression compiled", "a normalisation pattern could not be compiled"},
    {"The encoding is known", "a character encoding is not available"},
    {"The text is too long", "the text is too long to be converted"},
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
  return "an internal check of the library failed (-v shows which)";
}

std::string causeWithoutSource(const std::exception& error) {
  if (dynamic_cast<const VELOutOfMemoryError*>(&error) != nullptr ||
      dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return kOutOfMemory;
  }
  if (dynamic_cast<const std::length_error*>(&error) != nullptr) {
    return "a text is too large to be held in memory";
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

#pragma once

#include <exception>
#include <string>

#include "cli/terminal/Terminal.h"

/// The cause of an error, in words for users of the program. `Verbose` appends the library's own
/// text in brackets, for bug reports.
std::string causeOf(const std::exception& error, Verbosity verbosity);

#pragma once

#include <exception>
#include <string>

#include "cli/terminal/Terminal.h"

/// What went wrong, in words for people who test reports and have never seen the library's source.
/// With `Verbose`, the error's own text, which is for those who have, follows in brackets.
std::string causeOf(const std::exception& error, Verbosity verbosity);

#pragma once

#include <string_view>

#include "cli/content/Tolerance.h"
#include "cli/custom/ContentOutcome.h"

/// What one line of the output is for the line of the master in its place.
enum class LineMatch { Same, Allowed, Different };

/// Compares two lines word by word; line ends, "\r" included, are none of them. Numbers, which are
/// words of their own (`NumberTokens`), may be off by `tolerance`.
LineMatch matchLines(std::string_view master, std::string_view output, const Tolerance& tolerance);

/// Takes a line off the start of `text`, and leaves out its line end.
std::string_view takeLine(std::string_view& text);

/// Compares two texts line by line. Whether the last line has a line end does not count.
ContentOutcome compareNumbers(std::string_view master, std::string_view output,
                              const Tolerance& tolerance);

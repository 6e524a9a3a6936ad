#pragma once

#include <string>

#include "cli/commands/Options.h"
#include "cli/config/FindConfig.h"

/// Prints on `std::cout` what the rules of a format mask in the two files of a pair, and what they
/// hide, as `orvdiff explain` does. Raises `CommandError` for a file that cannot be read.
void printExplanation(const CommonOptions& options, const std::string& format,
                      const std::string& master, const std::string& actual,
                      const ConfigChoice& config);

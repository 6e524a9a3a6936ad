#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/system/ExitStatus.h"
#include "cli/terminal/Terminal.h"

/// Options that every verb takes.
struct CommonOptions {
  std::vector<std::string> words;  ///< of the whole command line
  std::string startFolder;         ///< that the user was in before -C; empty without -C
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

constexpr double kSecondsPerPair = 300;  ///< if the user does not say otherwise

/// Two files to compare.
struct PairOptions : CommonOptions {
  std::string master;
  std::string actual;
};

/// Does what the user asked for. Prints its findings on standard output and returns the exit
/// status. Raises `CommandError` if it cannot do its work.
using Performer = std::function<ExitStatus(const CommonOptions&)>;

#pragma once

#include <cstddef>
#include <functional>
#include <set>
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
  std::set<std::string> given;  ///< long names of the verb's options that the user gave
  std::string shellFolder;  ///< that the user typed the command in, whether there is a -C or not
};

constexpr double kSecondsPerPair = 300;  ///< if the user does not say otherwise
/// How much of each difference to show.
struct DifferenceOptions {
  std::size_t maxHunks = 3;  ///< 0: all
  std::size_t context = 2;   ///< lines around a change
  std::size_t width = 0;     ///< of the output, in columns; 0: that of the terminal
  bool hidesMasks = false;
};

/// Two files to compare.
struct PairOptions : CommonOptions {
  std::string master;
  std::string actual;
};

/// Does what the user asked for. Prints its findings on standard output and returns the exit
/// status. Raises `CommandError` if it cannot do its work.
using Performer = std::function<ExitStatus(const CommonOptions&)>;

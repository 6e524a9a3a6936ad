#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/config/SuiteConfig.h"

inline constexpr const char* kConfigName = "orvdiff.toml";

/// Which file to read, as the command line says.
struct ConfigChoice {
  std::string file;        ///< empty: the one found on the way up from the locations
  bool isNone = false;     ///< read no file
  bool isTrusted = false;  ///< whoever owns it

  /// Set by `loadConfig`: files further up than the one that counts.
  std::vector<std::string> overruled;
};

/// The suite's file: that of `choice`, or the nearest on the way up from `locations`, which are
/// files or folders. Nothing if there is none. Its problems are still to be looked at.
///
/// Raises `CommandError` for a file that cannot be read, for locations with different files, and
/// for a file that names programs to run although somebody else can write it.
std::optional<SuiteConfig> loadConfig(ConfigChoice& choice,
                                      const std::vector<std::string>& locations);

/// Whether the file is no longer what was read.
bool isChanged(const SuiteConfig& config);

/// Raises `CommandError` if there are problems, naming the first ones.
void requireSound(const SuiteConfig& config);

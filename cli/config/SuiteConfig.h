#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cli/config/TomlValue.h"
#include "cli/custom/KnownDifference.h"
#include "cli/custom/OwnFormat.h"
#include "cli/custom/OwnPattern.h"

/// A key of the table `[suite]`.
struct SuiteKey {
  enum class Type { Text, Path, Boolean, Count, Number, Texts, BooleanOrTexts };
  std::string_view name;
  Type type;
  double least = 0;  ///< of numbers
  double most = 0;   ///< likewise
};

/// All of them, in the order in which they are printed and documented.
const std::vector<SuiteKey>& suiteKeys();

/// What a suite's file says.
struct SuiteConfig {
  std::string path;     ///< of the file: absolute, without links
  std::string folder;   ///< that the file is in; relative paths are from there
  std::string content;  ///< its bytes
  /// The values of `[suite]` by key, each of the type that `suiteKeys` tells.
  std::map<std::string, TomlValue> suite;
  std::vector<OwnPattern> patterns;  ///< compiled
  std::vector<OwnFormat> formats;
  std::vector<KnownDifference> known;
  std::vector<ConfigProblem> problems;  ///< in the order of the file; usable only if there are none
};

/// Reads the text of a file; `name` is what messages call it. Never raises for what the text says:
/// whatever is wrong becomes a problem.
SuiteConfig readSuiteConfig(const std::string& path, const std::string& name, std::string content);

/// Whether the file says which programs to run: scripts of its own, or the working folder, from
/// which the scripts of documented formats are started.
bool namesPrograms(const SuiteConfig& config);

/// `path` of the file as an absolute one.
std::string pathFrom(const SuiteConfig& config, const std::string& path);

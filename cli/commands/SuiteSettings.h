#pragma once

#include <string>
#include <vector>

#include "cli/commands/VerifyOptions.h"
#include "cli/config/SuiteConfig.h"

/// Takes over the settings of `[suite]` that the command line does not give, paths among them as
/// absolute ones. Raises `CommandError`, naming the line, for one that cannot be used.
void takeSettings(const SuiteConfig& config, VerifyOptions& options);

/// Finds the suite's file for the locations and takes over its settings; `options.suite` is then
/// the file. Its rules wait until the working folder is entered (`takeRules`). Does nothing if
/// there is no file. Raises what `suiteConfigFor` and `takeSettings` raise.
void takeConfig(VerifyOptions& options, Verbosity verbosity);

/// The same for a verb that only has to find the suite's files.
void takeSelection(const SuiteConfig& config, const CommonOptions& given, FormatOptions& formats,
                   std::string& workFolder);

/// A setting as it counts: as TOML, and where it comes from.
struct EffectiveSetting {
  std::string key;
  std::string value;
  std::string origin;  ///< "orvdiff.toml:5:1", "command line" or "default"
};

/// All settings of a run with `options`, into which those of `config` (may be null) are taken.
std::vector<EffectiveSetting> effectiveSettings(const SuiteConfig* config,
                                                const VerifyOptions& options);

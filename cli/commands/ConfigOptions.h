#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/Verb.h"
#include "cli/config/FindConfig.h"
#include "cli/record/RunRecord.h"
#include "cli/suite/FormatSelection.h"

/// Adds --config, --no-config and --trust-config.
void addConfig(CLI::App& verb, ConfigChoice& choice);

/// The suite's file for `locations`, sound; nothing if there is none. With -v, says which one it is
/// and which others on the way up do not count. Raises `CommandError` for a file that cannot be
/// used.
std::optional<SuiteConfig> suiteConfigFor(ConfigChoice choice,
                                          const std::vector<std::string>& locations,
                                          Verbosity verbosity);

/// The choice for work on what a run recorded: the file that the run worked by, or none, unless
/// `choice` says otherwise.
ConfigChoice configOfRun(ConfigChoice choice, const RunConfig& run);

/// The patterns and formats of the suite that `files` belong to, the first one before the others;
/// for verbs that look at single files.
FormatOptions rulesForFiles(const ConfigChoice& choice, const std::vector<std::string>& files,
                            Verbosity verbosity);

/// Sets what `config` defines besides settings: patterns, formats and the layout of the suite.
/// `outputRoot` of the layout is as seen from the working folder, so enter that before.
void takeRules(const SuiteConfig& config, FormatOptions& formats);

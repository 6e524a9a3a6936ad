#include "cli/commands/ConfigOptions.h"

#include <filesystem>
#include <iostream>
#include <system_error>

#include "cli/custom/FormatList.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/terminal/Printable.h"

namespace {

/// An absolute path as seen from the working folder, as outputs have been named ever since.
std::string fromWorkingFolder(const std::string& path) {
  std::error_code error;
  const std::filesystem::path here = std::filesystem::current_path(error);
  const std::string near = std::filesystem::path(path).lexically_relative(here);
  return error || near.empty() ? path : near;
}

}  // namespace

void addConfig(CLI::App& verb, ConfigChoice& choice) {
  CLI::Option* const file =
      verb.add_option("--config", choice.file,
                      "Take the suite's settings, patterns and formats from FILE (default: the "
                      "nearest orvdiff.toml on the way up)")
          ->check(notEmpty())
          ->type_name("FILE");
  verb.add_flag("--no-config", choice.isNone, "Read no orvdiff.toml")->excludes(file);
  verb.add_flag("--trust-config", choice.isTrusted,
                "Run the programs that the file names, even if somebody else can write it");
}

std::optional<SuiteConfig> suiteConfigFor(ConfigChoice choice,
                                          const std::vector<std::string>& locations,
                                          Verbosity verbosity) {
  auto config = loadConfig(choice, locations);
  if (config) {
    requireSound(*config);
  }
  if (config && verbosity == Verbosity::Verbose) {
    std::cout << "Settings from " << printable(config->path) << '\n';
    for (const std::string& file : choice.overruled) {
      std::cout << "    not from " << printable(file) << ", which is further up\n";
    }
  }
  return config;
}

ConfigChoice configOfRun(ConfigChoice choice, const RunConfig& run) {
  if (choice.file.empty()) {
    choice.file = run.file;
    choice.isNone = choice.isNone || run.file.empty();
  }
  return choice;
}

FormatOptions rulesForFiles(const ConfigChoice& choice, const std::vector<std::string>& files,
                            Verbosity verbosity) {
  FormatOptions formats;
  for (const std::string& file : files) {
    if (const auto config = suiteConfigFor(choice, {file}, verbosity)) {
      takeRules(*config, formats);
      break;
    }
  }
  return formats;
}

void takeRules(const SuiteConfig& config, FormatOptions& formats) {
  formats.patterns = config.patterns;
  FormatList::setOwn(config.formats);
  SuiteLayout layout;
  if (const auto found = config.suite.find("masters"); found != config.suite.end()) {
    layout.masterFolder = found->second.text;
  }
  if (const auto found = config.suite.find("outputs"); found != config.suite.end()) {
    layout.outputRoot = fromWorkingFolder(pathFrom(config, found->second.text));
  }
  setSuiteLayout(layout);
}

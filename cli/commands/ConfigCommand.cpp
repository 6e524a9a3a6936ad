#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigCheck.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/SuiteSettings.h"
#include "cli/commands/WorkFolder.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace {

struct ConfigVerbOptions : VerifyOptions {
  bool checks = false;
};

std::string listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "" : ", ") + text;
  }
  return list;
}

void printSettings(const SuiteConfig* config, const VerifyOptions& options) {
  const auto settings = effectiveSettings(config, options);
  std::size_t width = 0;
  for (const EffectiveSetting& setting : settings) {
    width = std::max(width, setting.key.size() + setting.value.size() + 3);
  }
  std::cout << "[suite]\n";
  for (const EffectiveSetting& setting : settings) {
    const std::string line = setting.key + " = " + setting.value;
    std::cout << printable(line) << std::string(width - line.size() + 2, ' ') << "# "
              << printable(setting.origin) << '\n';
  }
}

void printRest(const SuiteConfig& config) {
  for (const OwnPattern& pattern : config.patterns) {
    std::cout << "\n# " << printable(toText(pattern.definedAt)) << "\n[[pattern]] "
              << printable(pattern.name) << " of " << printable(listed(pattern.formats)) << ": "
              << printable(pattern.why) << '\n';
  }
  for (const OwnFormat& format : config.formats) {
    std::cout << "\n# " << printable(toText(format.definedAt)) << "\n[[format]] "
              << printable(format.name) << " in " << printable(format.outputFolder) << '\n';
  }
  for (const KnownDifference& known : config.known) {
    std::cout << "\n# " << printable(toText(known.definedAt)) << "\n[[known]] "
              << printable(known.pair)
              << (known.groups.empty() ? "" : " group " + printable(listed(known.groups)))
              << printable(known.verdict.empty() ? "" : " " + known.verdict) << " until "
              << known.until << ": " << printable(known.why) << '\n';
  }
}

ExitStatus run(const ConfigVerbOptions& given) {
  VerifyOptions options = given;
  if (options.locations.empty()) {
    options.locations = {"."};
  }
  if (given.checks) {
    return checkConfig(options);
  }
  auto config = suiteConfigFor(options.config, options.locations, options.verbosity);
  if (config) {
    takeSettings(*config, options);
  }
  enterWorkFolder(options.workFolder, options.locations, {&options.formats.layoutData.schema});
  if (config) {
    takeRules(*config, options.formats);
  }
  std::cout << (config ? "# " + printable(config->path)
                       : std::string("# no ") + kConfigName + " on the way up")
            << "\nversion = 1\n\n";
  printSettings(config ? &*config : nullptr, options);
  if (config) {
    printRest(*config);
  }
  return kExitPassed;
}

}  // namespace

void addConfigVerb(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ConfigVerbOptions>(
      app, chosen, "config",
      "Show the settings that count for a suite and where each comes from, or check its file", run);
  verb.add_flag("--check", options.checks,
                "Say what is wrong with the suite's file, and try its patterns on the masters");
  addVerifyOptions(verb, options);
}

#include "cli/commands/ConfigCheck.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands/ConfigOptions.h"
#include "cli/commands/SuiteSettings.h"
#include "cli/commands/WorkFolder.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvOriginMap.h"

namespace {

/// Tries patterns, each alone, on the masters of the formats they are for.
class MasterTrial {
 public:
  MasterTrial(SuiteConfig& config, const MaskLimits& limits) : m_config(config), m_limits(limits) {}

  void run(const FormatOptions& options, const FoundReports& found) {
    for (const OwnPattern& pattern : m_config.patterns) {
      FormatOptions own = options;
      own.names = pattern.formats;
      for (const SelectedFormat& format : selectFormats(own)) {
        for (const std::string& report : found.reports) {
          for (const OrvFilePair& pair : format.engine->findPairs(report)) {
            tryOn(pattern, pair.master);
          }
        }
      }
    }
  }

  std::size_t masters() const { return m_masters.size(); }

 private:
  void complain(const OwnPattern& pattern, const std::string& text) {
    if (m_refused.insert(&pattern).second) {  // once is enough: the next run tells of the next
      m_config.problems.push_back({pattern.definedAt, "pattern \"" + pattern.name + "\" " + text});
    }
  }

  void tryOn(const OwnPattern& pattern, const std::string& master) {
    m_masters.insert(master);
    OrvFileHandle file(master.c_str(), "r");
    if (file == nullptr || m_refused.count(&pattern) > 0) {
      return;  // a master that cannot be read is the audit's business
    }
    try {
      const OrvTextBuffer text = OrvDiffLib::slurpFile(file);
      const OrvOriginMap map(text.get(), {pattern.pattern.get()});
      const double size = static_cast<double>(map.original().size());
      std::size_t sum = 0;
      std::size_t longest = 0;
      for (const OrvOriginMap::Mask& mask : map.masks()) {
        const bool isOurs = map.rules()[mask.rule].pattern != nullptr;
        sum += isOurs ? mask.end - mask.begin : 0;
        longest = std::max(longest, isOurs ? mask.end - mask.begin : 0);
      }
      const bool isLarge = map.original().size() > kLongestSmallFile;
      if (isLarge && isTooMuch(longest, size, m_limits.match)) {
        complain(pattern, "masks more than mask-limit allows: " + std::to_string(longest) +
                              " bytes at once of " + master);
      } else if (isLarge && isTooMuch(sum, size, m_limits.sum)) {
        complain(pattern, "masks more than mask-sum-limit allows: " + std::to_string(sum) +
                              " bytes in all of " + master);
      }
    } catch (const std::exception& error) {
      complain(pattern, "fails on " + master + ": " + causeOf(error, Verbosity::Normal));
    }
  }

  static bool isTooMuch(std::size_t masked, double size, double percent) {
    constexpr double kAll = 100;
    return percent > 0 && static_cast<double>(masked) > percent / kAll * size;
  }

  SuiteConfig& m_config;
  const MaskLimits m_limits;
  std::set<std::string> m_masters;
  std::set<const OwnPattern*> m_refused;
};

void checkPatterns(SuiteConfig& config) {
  for (const OwnPattern& pattern : config.patterns) {
    if (matchesEmptyText(pattern)) {
      config.problems.push_back(
          {pattern.definedAt, "pattern \"" + pattern.name + "\" can match the empty text"});
    } else if (!pattern.pattern->isLinear()) {
      std::cout << printable(toText(pattern.definedAt)) << ": note: pattern \""
                << printable(pattern.name)
                << "\" is outside the linear subset: ICU runs it, more slowly, and a text that "
                   "takes it too long is an error\n";
    }
  }
}

ExitStatus report(const SuiteConfig& config, std::size_t masters) {
  for (const ConfigProblem& problem : config.problems) {
    std::cout << printable(toText(problem)) << '\n';
  }
  if (!config.problems.empty()) {
    std::cout << countOf(config.problems.size(), "problem") << " in " << printable(config.path)
              << '\n';
    return kExitTrouble;
  }
  std::cout << printable(config.path) << " is sound: " << countOf(config.patterns.size(), "pattern")
            << ", " << countOf(config.formats.size(), "format") << ", "
            << countOf(config.known.size(), "known difference");
  if (!config.patterns.empty()) {
    std::cout << "; patterns tried on " << countOf(masters, "master");
  }
  std::cout << '\n';
  return kExitPassed;
}

}  // namespace

ExitStatus checkConfig(VerifyOptions options) {
  auto config = loadConfig(options.config, options.locations);
  if (!config) {
    throw CommandError(std::string("there is no ") + kConfigName + " on the way up from " +
                       options.locations.front());
  }
  std::size_t masters = 0;
  if (config->problems.empty()) {
    checkPatterns(*config);
  }
  if (config->problems.empty()) {
    takeSettings(*config, options);
    enterWorkFolder(options.workFolder, options.locations, {&options.formats.layoutData.schema});
    takeRules(*config, options.formats);
    MasterTrial trial(*config, options.maskLimits);
    trial.run(options.formats, findReports(options.locations));
    masters = trial.masters();
  }
  return report(*config, masters);
}

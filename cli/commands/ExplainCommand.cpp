#include <algorithm>
#include <iomanip>
#include <iostream>
#include <limits>
#include <sstream>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/Explanation.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/HiddenDifferences.h"
#include "cli/commands/OwnRules.h"
#include "cli/commands/Verb.h"
#include "cli/custom/FormatList.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Printable.h"
#include "cli/terminal/Table.h"
#include "orvdiff/platform/VELErrors.h"

namespace {

using Mask = OrvOriginMap::Mask;
using Rule = OrvOriginMap::Rule;

struct ExplainOptions : CommonOptions {
  std::string format;
  std::string master;  ///< or the only file
  std::string actual;  ///< empty: none
  ConfigChoice config;
};

/// A file with what the rules make of it.
struct MappedFile {
  OrvTextBuffer text;
  OrvOriginMap map;
};

void requireOpen(const OrvFileHandle& file, const std::string& name) {
  if (file == nullptr) {
    throw CommandError(name + " " + missingReason(name));
  }
}

/// A mistyped name is an error even if nothing is read.
void requireReadable(const std::string& name) {
  requireOpen(OrvFileHandle(name.c_str(), "r"), name);
}

MappedFile readFile(const std::string& name, const OrvPatternList& patterns, Verbosity verbosity) {
  OrvFileHandle file(name.c_str(), "r");
  requireOpen(file, name);
  InputText input = readText(name, file, verbosity);
  if (input.containsNul) {
    std::cerr << "orvdiff: " << printable(name)
              << " contains a NUL byte; only the text before it is explained\n";
  }
  try {
    OrvOriginMap map(input.text.get(), patterns);
    return {std::move(input.text), std::move(map)};
  } catch (const VELThrowable& error) {
    throw CommandError(name + ": " + causeOf(error, verbosity));
  }
}

std::string percentage(std::size_t part, std::size_t whole) {
  const double percent =
      whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0;
  std::ostringstream text;
  text << std::fixed << std::setprecision(1) << percent << " %";
  return part > 0 && percent < 0.05 ? "<0.1 %" : text.str();
}

/// "1200 of 4000 bytes (30.0 %)".
std::string maskedSum(const OrvOriginMap& map) {
  std::size_t masked = 0;
  for (const Rule& rule : map.rules()) {
    masked += rule.maskedBytes;
  }
  const std::size_t all = map.original().size();
  return std::to_string(masked) + " of " + countOf(all, "byte") + " (" + percentage(masked, all) +
         ')';
}

/// The longest mask of each rule; null where it has none.
std::vector<const Mask*> longestMasks(const OrvOriginMap& map) {
  std::vector<const Mask*> longest(map.rules().size());
  for (const Mask& mask : map.masks()) {
    const Mask*& best = longest[mask.rule];
    if (best == nullptr || mask.end - mask.begin > best->end - best->begin) {
      best = &mask;
    }
  }
  return longest;
}

std::string describeLongest(const OrvOriginMap& map, const Mask* mask) {
  constexpr std::size_t kExcerptColumns = 40;
  if (mask == nullptr) {
    return "all of it inside what later rules mask";
  }
  const std::size_t first = map.position(mask->begin).line;
  const std::size_t last = map.position(std::max(mask->begin + 1, mask->end) - 1).line;
  std::string lines = "line " + std::to_string(first);
  if (last != first) {
    lines = "lines " + std::to_string(first) + '-' + std::to_string(last);
  }
  return "longest: " + countOf(mask->end - mask->begin, "byte") + " in " + lines + ": " +
         shortened(hiddenText(map, mask), kExcerptColumns);
}

/// The rules that match nothing are not worth a line each, unless somebody asks.
void printIdle(const std::vector<std::string>& names, Verbosity verbosity) {
  if (verbosity == Verbosity::Verbose) {
    for (const std::string& name : names) {
      std::cout << "No match: " << name << '\n';
    }
  } else if (!names.empty()) {
    std::cout << countOf(names.size(), "rule") << " without a match (-v lists them)\n";
  }
}

/// Who added the patterns among the rules that are not the format's, and why.
void printSuitePatterns(const OrvOriginMap& map, const std::vector<OwnPattern>& own) {
  for (const Rule& rule : map.rules()) {
    const auto found = std::find_if(own.begin(), own.end(), [&rule](const OwnPattern& pattern) {
      return pattern.pattern.get() == rule.pattern;
    });
    if (found != own.end()) {
      std::cout << "Suite pattern " << printable(found->name) << ", from "
                << printable(toText(found->definedAt)) << ": " << printable(found->why) << '\n';
    }
  }
}

void explainFile(const ExplainOptions& options, const OrvPatternList& patterns,
                 const std::vector<OwnPattern>& own) {
  const MappedFile file = readFile(options.master, patterns, options.verbosity);
  const OrvOriginMap& map = file.map;
  const std::vector<const Mask*> longest = longestMasks(map);
  Table table;
  std::vector<std::string> idle;
  table.add({"RULE", "MATCHES", "BYTES", "SHARE"});
  for (std::size_t i = 0; i < longest.size(); ++i) {
    const Rule& rule = map.rules()[i];
    const std::string name = printable(rule.name);
    if (rule.matches == 0) {
      idle.push_back(name);
      continue;
    }
    table.add({name, std::to_string(rule.matches), std::to_string(rule.maskedBytes),
               percentage(rule.maskedBytes, map.original().size())},
              describeLongest(map, longest[i]));
  }
  if (options.verbosity != Verbosity::Quiet) {
    if (idle.size() < longest.size()) {
      table.print();
    }
    printIdle(idle, options.verbosity);
    printSuitePatterns(map, own);
  }
  std::cout << "Masked: " << maskedSum(map) << '\n';
}

void printRules(const OrvOriginMap& master, const OrvOriginMap& actual,
                const HiddenDifferences& hidden, Verbosity verbosity) {
  Table table;
  std::vector<std::string> idle;
  table.add({"RULE", "MASTER", "BYTES", "ACTUAL", "BYTES", "DIFFER"});
  for (std::size_t i = 0; i < master.rules().size(); ++i) {
    const Rule& left = master.rules()[i];
    const Rule& right = actual.rules()[i];
    const std::string name = printable(left.name);
    if (left.matches + right.matches == 0) {
      idle.push_back(name);
      continue;
    }
    table.add({name, std::to_string(left.matches), std::to_string(left.maskedBytes),
               std::to_string(right.matches), std::to_string(right.maskedBytes),
               std::to_string(hidden.countOf(i))});
  }
  if (idle.size() < master.rules().size()) {
    table.print();
  }
  printIdle(idle, verbosity);
}

void explainPair(const ExplainOptions& options, const OrvPatternList& patterns,
                 const std::vector<OwnPattern>& own) {
  constexpr std::size_t kUsuallyShown = 3;
  const MappedFile master = readFile(options.master, patterns, options.verbosity);
  const MappedFile actual = readFile(options.actual, patterns, options.verbosity);
  const HiddenDifferences hidden(master.map, actual.map);
  if (options.verbosity != Verbosity::Quiet) {
    printRules(master.map, actual.map, hidden, options.verbosity);
    printSuitePatterns(master.map, own);
    hidden.print(options.verbosity == Verbosity::Verbose ? std::numeric_limits<std::size_t>::max()
                                                         : kUsuallyShown,
                 Palette(options.color));
    std::cout << "\nMasked: " << maskedSum(master.map) << " of the master, "
              << maskedSum(actual.map) << " of the actual output\n";
    if (hidden.isCoarse()) {
      std::cout << "There are too many masks to tell exactly which belong together.\n";
    }
  }
  const std::string count = countOf(hidden.count(), "difference");
  if (master.map.text() != actual.map.text()) {
    std::cout << "The files also differ where nothing is masked; the rules hide " << count << ".\n";
  } else if (hidden.count() > 0) {
    std::cout << "The files differ only where the rules mask them: " << count << ".\n";
  } else {
    std::cout << "The files are equal.\n";
  }
}

ExitStatus run(const ExplainOptions& options) {
  std::vector<std::string> files = {options.master};
  if (!options.actual.empty()) {
    files.push_back(options.actual);
  }
  const FormatOptions suite = rulesForFiles(options.config, files, options.verbosity);
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, {}, suite.patterns);
  const OrvPatternList* const patterns = engine->getCleansingPatterns();
  if (patterns == nullptr) {
    requireReadable(options.master);
    if (!options.actual.empty()) {
      requireReadable(options.actual);
    }
    if (const OwnFormat* const ownFormat = FormatList::ownOf(format)) {
      explainOwnRules(*ownFormat, *engine, options.master, options.actual);
      return kExitPassed;
    }
    std::cout << "Nothing is masked: no rule applies to format " << options.format
              << ", which is compared by " << format.comparison << ".\n";
  } else if (options.actual.empty()) {
    explainFile(options, *patterns, suite.patterns);
  } else {
    explainPair(options, *patterns, suite.patterns);
  }
  return kExitPassed;
}

}  // namespace

void printExplanation(const CommonOptions& options, const std::string& format,
                      const std::string& master, const std::string& actual,
                      const ConfigChoice& config) {
  ExplainOptions explained;
  static_cast<CommonOptions&>(explained) = options;
  explained.format = format;
  explained.master = master;
  explained.actual = actual;
  explained.config = config;
  run(explained);
}

void addExplain(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ExplainOptions>(
      app, chosen, "explain", "Show what the rules of a format mask in a file, or hide in a pair",
      run);
  addFormat(verb, options.format);
  verb.add_option("FILE", options.master, "The file to explain, or the master of a pair")
      ->required()
      ->check(notEmpty())
      ->type_name("");
  verb.add_option("ACTUAL", options.actual, "The actual output of the pair")
      ->check(notEmpty())
      ->type_name("");
  addConfig(verb, options.config);
}

#include <filesystem>
#include <iostream>
#include <system_error>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/Verb.h"
#include "cli/probe/PatternToml.h"
#include "cli/probe/ProbePrinter.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace {

struct ProbeOptions : CommonOptions {
  std::string format;
  std::vector<std::string> runs;
  std::string append;  ///< empty: print the patterns
  ConfigChoice config;
};

/// What the names of the format's outputs end with.
std::string tailOf(const OrvDiffFileEngine& engine) {
  const std::string pattern = engine.getMasterPattern("report.xml");
  return pattern.substr(pattern.rfind('.'));
}

void append(const std::vector<Proposal>& proposals, const ProbeOptions& options) {
  const AppendedPatterns done = appendPatterns(proposals, options.format, options.append);
  std::cout << countOf(done.added, "pattern") << " appended to " << printable(options.append);
  if (done.known > 0) {
    std::cout << "; " << done.known << " were there already";
  }
  std::cout << ".\n";
}

/// The suite's own patterns are applied, so that only what they leave is told: those of the file to
/// append to, else of the one that the first run or the working folder belongs to.
FormatOptions suiteRules(const ProbeOptions& options) {
  std::vector<std::string> places = {options.runs.front(), "."};
  std::error_code unknown;
  if (std::filesystem::is_regular_file(options.append, unknown)) {
    places.insert(places.begin(), options.append);
  }
  return rulesForFiles(options.config, places, Verbosity::Normal);
}

ExitStatus run(const ProbeOptions& options) {
  const FormatOptions own = suiteRules(options);
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, {}, own.patterns);
  const OrvPatternList* const patterns = engine->getCleansingPatterns();
  if (patterns == nullptr) {
    throw CommandError("format " + options.format + " is compared by " +
                       std::string(format.comparison) + ", so no pattern applies to it");
  }
  const RunFolders folders = findRunFiles(options.runs, tailOf(*engine));
  RunTexts texts(folders, *patterns);
  const Variations variations = findVariations(texts);
  const Proposals proposals = propose(variations, texts);
  const ProposalCheck check = checkProposals(proposals, variations.places, texts);
  const ProbeFindings findings = {texts, variations, proposals, check, options.format};
  // Standard output is for the patterns alone, so that it can go to a file.
  std::ostream& out = options.append.empty() ? std::cerr : std::cout;
  printFindings(findings, options.verbosity, Palette(options.color), out);
  if (!options.append.empty()) {
    append(proposals.patterns, options);
  } else if (!proposals.patterns.empty()) {
    std::cerr << '\n';
    std::cout << tomlOf(proposals.patterns, options.format);
  }
  return isExplained(findings) ? kExitPassed : kExitNotPassed;
}

}  // namespace

void addProbe(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ProbeOptions>(
      app, chosen, "probe",
      "Find what varies between runs that should be the same, and propose patterns for it", run);
  addFormat(verb, options.format);
  verb.add_option("RUN", options.runs, "Folders with the outputs of two or more runs")
      ->required()
      ->expected(2, -1)
      ->check(notEmpty())
      ->type_name("");
  verb.add_option("--append", options.append,
                  "Append the patterns to FILE (default: orvdiff.toml) instead of printing them")
      ->expected(0, 1)
      ->default_str(kConfigName)
      ->option_text("[FILE]");
  addConfig(verb, options.config);
}

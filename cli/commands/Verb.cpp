#include "cli/commands/Verb.h"

#include <algorithm>

std::set<std::string> givenOptions(const CLI::App& verb) {
  std::set<std::string> given;
  for (const CLI::Option* const option : verb.get_options()) {
    if (option->count() > 0) {
      given.insert(option->get_name());
    }
  }
  return given;
}

const CLI::App* findVerb(const CLI::App& app, const std::string& name) {
  const auto verbs = app.get_subcommands({});
  const auto found = std::find_if(verbs.begin(), verbs.end(),
                                  [&name](const CLI::App* verb) { return verb->check_name(name); });
  return found == verbs.end() ? nullptr : *found;
}

const CLI::Validator& notEmpty() {
  static const CLI::Validator validator(
      [](const std::string& text) { return text.empty() ? "needs a value" : ""; }, "");
  return validator;
}

void addFormat(CLI::App& verb, std::string& format) {
  verb.add_option("FORMAT", format, "A format listed by \"orvdiff formats\"")
      ->required()
      ->type_name("");
}

void addPair(CLI::App& verb, PairOptions& pair) {
  verb.add_option("MASTER", pair.master, "The expected output")->required()->type_name("");
  verb.add_option("ACTUAL", pair.actual, "The output to check")->required()->type_name("");
}

void addTimeout(CLI::App& verb, double& seconds) {
  verb.add_option("--timeout", seconds,
                  "Give up on a pair after SECONDS; 0 for no limit (default: 300)")
      ->check(CLI::NonNegativeNumber)
      ->option_text("SECONDS");
}

void addDifferences(CLI::App& verb, DifferenceOptions& differences) {
  constexpr std::size_t kMostContext = 1000;
  constexpr std::size_t kLeastWidth = 20;
  constexpr std::size_t kMostWidth = 10'000;
  verb.add_option("--max-diffs", differences.maxHunks,
                  "Show N differences of a pair; 0 for all (default: 3)")
      ->check(CLI::NonNegativeNumber)
      ->option_text("N");
  verb.add_option("--context", differences.context,
                  "Show N lines around each difference (default: 2)")
      ->check(CLI::Range(std::size_t{0}, kMostContext))
      ->option_text("N");
  verb.add_option("--width", differences.width,
                  "Show differences N columns wide (default: as wide as the terminal, or 100)")
      ->check(CLI::Range(kLeastWidth, kMostWidth))
      ->option_text("N");
  verb.add_flag("--no-masks", differences.hidesMasks,
                "Leave out of differences what the format's rules mask");
}

void addNoGroups(CLI::App& verb, bool& groupsChanges) {
  verb.add_flag_callback(
      "--no-groups", [&groupsChanges] { groupsChanges = false; },
      "Print pair by pair, and not once what several pairs have in common");
}

void addLayoutData(CLI::App& verb, LayoutDataOptions& layoutData) {
  verb.add_option("--layout-schema", layoutData.schema,
                  "Layout-data schema (default: as configured)")
      ->type_name("FILE");
  verb.add_option("--layout-namespace", layoutData.namespaceUri,
                  "Namespace of the layout-data schema (default: as configured)")
      ->type_name("URI");
}

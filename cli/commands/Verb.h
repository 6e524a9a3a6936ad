#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands/Options.h"
#include "cli/suite/FormatSelection.h"

// What the file of a verb needs to define its options.

template <typename Options>
struct Verb {
  CLI::App& app;     ///< takes the definitions of the verb's options
  Options& options;  ///< their targets, which live as long as the app or the performer
};

/// The long names of the options that the user gave.
std::set<std::string> givenOptions(const CLI::App& verb);

/// Adds a verb to `app`. If the user chooses it, parsing sets `chosen` to `run` with its options.
template <typename Options>
Verb<Options> addVerb(CLI::App& app, Performer& chosen, const char* name, const char* help,
                      ExitStatus (*run)(const Options&)) {
  const auto options = std::make_shared<Options>();
  CLI::App* const verb = app.add_subcommand(name, help);
  verb->callback([&chosen, verb, options, run] {
    chosen = [options, run, given = givenOptions(*verb)](const CommonOptions& common) {
      static_cast<CommonOptions&>(*options) = common;
      options->given = given;
      return run(*options);
    };
  });
  return {*verb, *options};
}

/// The verb that goes by `name`; null if there is none.
const CLI::App* findVerb(const CLI::App& app, const std::string& name);

/// Adds an option `name` whose argument is one of a few words, each of which stands for a value.
/// Its type names the words, which is where completion finds them.
template <typename Value>
CLI::Option* addChoice(CLI::App& app, const std::string& name, Value& value, const char* help,
                       const std::vector<std::pair<std::string, Value>>& choices) {
  const auto choose = [&value, name, choices](const std::string& word) {
    std::string words;
    for (const auto& [choice, meaning] : choices) {
      if (word == choice) {
        value = meaning;
        return;
      }
      words += (words.empty() ? "" : ", ") + choice;
    }
    throw CLI::ValidationError(name, "\"" + word + "\" is not one of " + words);
  };
  std::string words;
  for (const auto& choice : choices) {
    words += (words.empty() ? "" : ",") + choice.first;
  }
  return app.add_option_function<std::string>(name, choose, help)->type_name('{' + words + '}');
}

/// For files whose empty name stands for "none" in the options, so that it must not be given.
const CLI::Validator& notEmpty();

/// Adds an argument FORMAT.
void addFormat(CLI::App& verb, std::string& format);

/// Adds the arguments MASTER and ACTUAL.
void addPair(CLI::App& verb, PairOptions& pair);

/// Adds an option for the time that comparing a pair may take; 0 stands for any.
void addTimeout(CLI::App& verb, double& seconds);

/// Adds options that say how to show differences.
void addDifferences(CLI::App& verb, DifferenceOptions& differences);

/// Adds the option that turns groups of equal changes off.
void addNoGroups(CLI::App& verb, bool& groupsChanges);

/// Adds options that say where the layout-data schema is.
void addLayoutData(CLI::App& verb, LayoutDataOptions& layoutData);

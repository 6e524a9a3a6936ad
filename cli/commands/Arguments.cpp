#include "cli/commands/Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/commands/Verb.h"

// Every workaround for the way CLI11 (2.1, as in Debian 12) reads a command line is in this file:
//
// - A positional in brackets, "[2023]", is read as a list that contains 2023. There is no way to
//   turn that off, so "./[2023]" is passed instead, which names the same file.
// - An option with an empty value, "--summary=", takes the next word as its value: a location would
//   be overwritten with the summary.
// - A first word that is no command is reported as a missing command, without naming the word.

namespace {

/// Whether `word` is an option, of any command, that takes the next word as its value.
bool takesValue(const CLI::App& app, const std::string& word) {
  const auto matches = [&word](const CLI::Option* option) {
    return !option->get_positional() && option->get_items_expected_max() > 0 &&
           option->check_name(word);
  };
  const auto options = app.get_options();
  const auto commands = app.get_subcommands({});
  return std::any_of(options.begin(), options.end(), matches) ||
         std::any_of(commands.begin(), commands.end(),
                     [&word](const CLI::App* command) { return takesValue(*command, word); });
}

bool isOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

bool looksLikeList(const std::string& word) {
  return !word.empty() && word.front() == '[' && word.back() == ']';
}

void requireValue(const CLI::App& app, const std::string& option) {
  if (option.back() == '=' && takesValue(app, option.substr(0, option.size() - 1))) {
    throw CLI::ArgumentMismatch(option + " needs a value");
  }
}

}  // namespace

std::vector<std::string> argumentsFor(const CLI::App& app, int argc, char** argv) {
  std::vector<std::string> words;
  bool hasCommand = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (isOption(word)) {
      requireValue(app, word);
      words.push_back(word);
    } else if (takesValue(app, argv[i - 1])) {
      words.push_back(word);
    } else if (hasCommand || findVerb(app, word) != nullptr) {
      hasCommand = true;
      words.push_back(looksLikeList(word) ? "./" + word : word);
    } else {
      throw CLI::ArgumentMismatch("unknown command \"" + word + "\"");
    }
  }
  std::reverse(words.begin(), words.end());
  return words;
}

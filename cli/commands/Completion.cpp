#include "cli/commands/Completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>

#include "cli/commands/CompletionValues.h"
#include "cli/commands/Verb.h"

namespace {

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

/// Which kind of value an option takes: the name that it goes by in the help text. Of the many ids
/// that go by that name, only those of groups can be found out.
std::string valueName(const CLI::Option& option) {
  if (option.check_name("--group")) {
    return "GROUP";
  }
  if (option.get_positional()) {
    return option.get_name();
  }
  std::string name =
      option.get_option_text().empty() ? option.get_type_name() : option.get_option_text();
  if (name.rfind("[=", 0) == 0) {
    name = name.substr(2, name.size() - 3);
  }
  return name;
}

/// The words that are all an option can be: CLI11 puts them into its type, as in "TEXT:{one,two}".
std::vector<std::string> choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  const std::size_t close = type.rfind('}');
  if (open == std::string::npos || close == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

/// The first clause of a help text, with what it refers to named as in the help.
std::string summaryOf(const std::string& help) {
  return help.substr(0, std::min({help.find(" ("), help.find("; "), help.find(": ")}));
}

/// The words of a command line up to the one that is being typed, as far as they say what that one
/// may be.
class CommandLineSoFar {
 public:
  explicit CommandLineSoFar(const CLI::App& app) : m_app(app) {}

  void add(const std::string& word) {
    if (m_pending != nullptr) {
      note(*m_pending, word);
      m_pending = nullptr;
    } else if (word == "--" && !m_isPastOptions) {
      m_isPastOptions = true;
    } else if (isOption(word)) {
      addOption(word);
    } else if (m_verb == nullptr) {
      m_verb = findVerb(m_app, word);
    } else {
      if (const CLI::Option* const argument = nextArgument()) {
        note(*argument, word);
      }
      ++m_argumentCount;
    }
  }

  /// Prints what `word` may become, the word after those that were added.
  void complete(const std::string& word) const {
    if (m_pending != nullptr) {
      completeValue(*m_pending, "", word);
    } else if (const std::size_t sign = word.find('='); isOption(word) && sign != word.npos) {
      if (const CLI::Option* const option = find(word.substr(0, sign))) {
        completeValue(*option, word.substr(0, sign + 1), word.substr(sign + 1));
      }
    } else if (isOption(word) || (word == "-" && !m_isPastOptions)) {
      print(word, options());
    } else if (m_verb == nullptr) {
      print(word, verbs());
    } else if (m_verb->get_name() == "help") {
      print(word, m_argumentCount == 0 ? verbs() : Candidates{});
    } else if (const CLI::Option* const argument = nextArgument()) {
      completeValue(*argument, "", word);
    }
  }

 private:
  bool isOption(const std::string& word) const {
    return !m_isPastOptions && word.size() > 1 && word.front() == '-';
  }

  void addOption(const std::string& word) {
    if (word[1] == '-') {
      const std::size_t nameEnd = std::min(word.find('='), word.size());
      const CLI::Option* const option = find(word.substr(0, nameEnd));
      addValue(option, nameEnd < word.size() ? word.substr(nameEnd + 1) : "");
      return;
    }
    for (std::size_t i = 1; i < word.size(); ++i) {  // several flags may share a dash
      const CLI::Option* const option = find({'-', word[i]});
      if (option != nullptr && takesValue(*option)) {
        addValue(option, word.substr(i + 1));
        return;
      }
    }
  }

  /// Takes what of the value stands in the word of the option; if nothing does, the next word is
  /// it.
  void addValue(const CLI::Option* option, const std::string& value) {
    if (option == nullptr || !takesValue(*option)) {
      return;
    }
    if (value.empty()) {
      m_pending = option;
    } else {
      note(*option, value);
    }
  }

  const CLI::Option* find(const std::string& name) const {
    const CLI::Option* const own = m_verb != nullptr ? m_verb->get_option_no_throw(name) : nullptr;
    return own != nullptr ? own : m_app.get_option_no_throw(name);
  }

  /// The argument that the next word without a dash is; the last one can take several.
  const CLI::Option* nextArgument() const {
    const CLI::Option* last = nullptr;
    std::size_t room = 0;
    for (const CLI::Option* const option : m_verb->get_options()) {
      if (option->get_positional()) {
        last = option;
        room += static_cast<std::size_t>(option->get_items_expected_max());
        if (m_argumentCount < room) {
          return last;
        }
      }
    }
    return nullptr;
  }

  /// Takes notice of a value that others depend on.
  void note(const CLI::Option& option, const std::string& value) {
    if (option.check_name("-C")) {
      std::error_code remainsHere;  // then nothing fits, or what fits is that of this folder
      std::filesystem::current_path(expandHome(value), remainsHere);
    } else if (valueName(option) == "RECORD" || option.check_name("--from")) {
      m_records.push_back(value);
    }
  }

  void completeValue(const CLI::Option& option, const std::string& before,
                     const std::string& typed) const {
    const std::string name = valueName(option);
    Candidates candidates = candidatesFor({name, typed, m_records});
    for (const std::string& choice : choicesOf(option)) {
      candidates.all.push_back({choice, {}});
    }
    const bool isList = option.get_delimiter() == ',' || name == "KINDS";
    const std::string earlier = isList ? typed.substr(0, typed.rfind(',') + 1) : "";
    for (Candidate& candidate : candidates.all) {
      candidate.value.insert(0, before + earlier);
    }
    print(before + typed, candidates);
  }

  Candidates verbs() const {
    Candidates candidates;
    for (const CLI::App* const verb : m_app.get_subcommands({})) {
      candidates.all.push_back({verb->get_name(), summaryOf(verb->get_description())});
    }
    return candidates;
  }

  Candidates options() const {
    Candidates candidates;
    for (const CLI::App* const app : {m_verb, &m_app}) {
      if (app == nullptr) {
        continue;
      }
      for (const CLI::Option* const option : app->get_options()) {
        for (const std::string& name : option->get_lnames()) {
          const bool isCommon = app == &m_app && m_verb != nullptr;
          if (!isCommon || (name != "help" && name != "version")) {
            candidates.all.push_back({"--" + name, summaryOf(option->get_description())});
          }
        }
      }
    }
    return candidates;
  }

  /// A name that does not fit in a line cannot be proposed.
  static void print(const std::string& word, const Candidates& candidates) {
    std::cout << (candidates.arePaths ? ":paths\n" : "");
    for (const auto& [value, description] : candidates.all) {
      if (value.compare(0, word.size(), word) == 0 && value.find_first_of("\n\t") == value.npos) {
        std::cout << value << (description.empty() ? "" : "\t") << description << '\n';
      }
    }
  }

  const CLI::App& m_app;
  const CLI::App* m_verb = nullptr;
  const CLI::Option* m_pending = nullptr;  ///< whose value the next word is
  bool m_isPastOptions = false;            ///< behind "--"
  std::size_t m_argumentCount = 0;
  std::vector<std::string> m_records;
};

}  // namespace

void printCompletions(const CLI::App& app, const std::vector<std::string>& words) {
  CommandLineSoFar line(app);
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    line.add(words[i]);
  }
  line.complete(words.empty() ? "" : words.back());
}

#include "cli/probe/PatternToml.h"

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include <toml++/toml.h>

#include "cli/system/CommandError.h"
#include "cli/system/OutputPlace.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr const char* kVersion = "version = 1\n";

bool isPlain(std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7F || c == '\'') {
      return false;
    }
  }
  return true;
}

/// A string as TOML writes it: between single quotes, where a backslash is one, if it can be.
std::string tomlString(std::string_view text) {
  if (isPlain(text)) {
    return '\'' + std::string(text) + '\'';
  }
  std::string quoted = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (c == '\n' || c == '\t') {
      quoted += c == '\n' ? "\\n" : "\\t";
    } else if (byte < ' ' || byte == 0x7F) {
      constexpr const char* kHex = "0123456789ABCDEF";
      quoted += "\\u00";
      quoted += kHex[byte >> 4U];
      quoted += kHex[byte & 0xFU];
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string tomlOf(const Proposal& proposal, const std::string& format) {
  std::ostringstream toml;
  toml << "[[pattern]]\nname = " << tomlString(proposal.name)
       << "\nexpression = " << tomlString(proposal.expression)
       << "\nreplacement = " << tomlString(proposal.replacement) << "\nformats = ["
       << tomlString(format) << "]\nwhy = " << tomlString(proposal.why) << '\n';
  for (const auto& [before, after] : proposal.examples) {
    toml << "\n  [[pattern.examples]]\n  before = " << tomlString(before)
         << "\n  after = " << tomlString(after) << '\n';
  }
  toml << "\n  [[pattern.examples]]\n  stays = " << tomlString(proposal.stays) << '\n';
  return toml.str();
}

std::string contentOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "";
}

toml::table parsed(const std::string& text, const std::string& name, const char* state) {
  try {
    return toml::parse(text, name);
  } catch (const toml::parse_error& error) {
    std::ostringstream message;
    message << name << ':' << error.source().begin.line << ':' << error.source().begin.column
            << state << error.description();
    throw CommandError(message.str());
  }
}

/// What the patterns of a file are called, and what they match in a format.
struct KnownPatterns {
  std::set<std::string> names;
  std::set<std::string> expressions;

  KnownPatterns(const toml::table& file, const std::string& format) {
    const toml::array* const patterns = file["pattern"].as_array();
    for (std::size_t i = 0; patterns != nullptr && i < patterns->size(); ++i) {
      const toml::table* const pattern = patterns->get(i)->as_table();
      if (pattern == nullptr) {
        continue;
      }
      names.insert((*pattern)["name"].value_or(std::string()));
      const toml::array* const formats = (*pattern)["formats"].as_array();
      for (std::size_t j = 0; formats != nullptr && j < formats->size(); ++j) {
        if (formats->get(j)->value_or(std::string()) == format) {
          expressions.insert((*pattern)["expression"].value_or(std::string()));
        }
      }
    }
  }
};

}  // namespace

std::string tomlOf(const std::vector<Proposal>& proposals, const std::string& format) {
  std::string toml;
  for (const Proposal& proposal : proposals) {
    toml += (toml.empty() ? "" : "\n") + tomlOf(proposal, format);
  }
  return toml;
}

AppendedPatterns appendPatterns(std::vector<Proposal> proposals, const std::string& format,
                                const std::string& name) {
  OutputPlace place("suite file", name);
  if (!place.isRegularFile()) {
    place.refuse("it is not a regular file");
  }
  const std::string before = contentOf(name);
  KnownPatterns known(parsed(before, name, ": "), format);
  AppendedPatterns done;
  std::vector<Proposal> added;
  for (Proposal& proposal : proposals) {
    if (known.expressions.count(proposal.expression) != 0) {
      ++done.known;
      continue;
    }
    const std::string base = proposal.name;
    for (int number = 2; !known.names.insert(proposal.name).second; ++number) {
      proposal.name = base + '-' + std::to_string(number);
    }
    added.push_back(std::move(proposal));
  }
  done.added = added.size();
  if (added.empty()) {
    return done;
  }
  std::string after = before.empty() ? kVersion : before;
  after += after.back() == '\n' ? "\n" : "\n\n";
  after += tomlOf(added, format);
  parsed(after, name, " does not take more patterns at its end: ");
  place.claim();
  place.write(after);
  return done;
}

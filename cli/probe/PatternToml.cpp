#include "cli/probe/PatternToml.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/config/FindConfig.h"
#include "cli/config/SuiteConfig.h"
#include "cli/system/OutputPlace.h"

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

/// Raises `CommandError` if the file, which exists, cannot be read.
std::string contentOf(const OutputPlace& place) {
  std::ifstream file(place.name(), std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(file), {}};
  if (!file) {
    place.refuse("its contents cannot be read");
  }
  return content;
}

/// The names that are taken, and what is matched in outputs of `format` already.
struct KnownPatterns {
  std::set<std::string> names;
  std::set<std::string> expressions;

  KnownPatterns(const SuiteConfig& config, const std::string& format) {
    for (const OwnPattern& pattern : config.patterns) {
      names.insert(pattern.name);
      if (std::find(pattern.formats.begin(), pattern.formats.end(), format) !=
          pattern.formats.end()) {
        expressions.insert(pattern.expression);
      }
    }
  }
};

/// Raises `CommandError` if a run could not use the file.
SuiteConfig soundConfig(const std::string& name, const std::string& content) {
  SuiteConfig config = readSuiteConfig(name, name, content);
  requireSound(config);
  return config;
}

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
  const std::string content = contentOf(place);
  const std::string before = content.empty() ? kVersion : content;
  KnownPatterns known(soundConfig(name, before), format);
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
  std::string after = before;
  after += after.back() == '\n' ? "\n" : "\n\n";
  after += tomlOf(added, format);
  soundConfig(name, after);
  place.claim();
  place.write(after);
  return done;
}

#include "cli/config/SuiteConfig.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>

#include "cli/config/FormatReader.h"
#include "cli/config/PatternReader.h"
#include "cli/config/TableReader.h"

namespace {

using Kind = TomlValue::Kind;
using Type = SuiteKey::Type;

constexpr int kVersion = 1;

bool areTexts(const TomlValue& value) {
  const auto isText = [](const TomlValue& one) {
    return one.kind == Kind::Text && !one.text.empty();
  };
  return isText(value) || (value.kind == Kind::Array &&
                           std::all_of(value.elements.begin(), value.elements.end(), isText));
}

std::string number(double value) {
  std::string text = std::to_string(value);
  text.erase(text.find_last_not_of('0') + 1);
  return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

/// What a value of this key must be; empty if `value` is that.
std::string mismatch(const SuiteKey& key, const TomlValue& value) {
  const auto unless = [](bool fits, const char* words) { return std::string(fits ? "" : words); };
  switch (key.type) {
    case Type::Text:
    case Type::Path:
      return unless(value.kind == Kind::Text && !value.text.empty(), "a text, and not empty");
    case Type::Boolean:
      return unless(value.kind == Kind::Boolean, "true or false");
    case Type::Texts:
      return unless(areTexts(value), "a text or an array of texts, none of them empty");
    case Type::BooleanOrTexts:
      return unless(value.kind == Kind::Boolean || areTexts(value),
                    "true, false, or an array of texts");
    case Type::Count:
    case Type::Number:
      break;
  }
  const bool isWhole = key.type == Type::Count;
  const bool fits = (value.kind == Kind::Integer || (value.kind == Kind::Number && !isWhole)) &&
                    value.number >= key.least && value.number <= key.most;
  return fits ? ""
              : std::string(isWhole ? "a whole number" : "a number") + " from " +
                    number(key.least) + " to " + number(key.most);
}

void readSuite(const TomlValue& table, SuiteConfig& config) {
  TableReader reader(table, "[suite]", config.problems);
  for (const SuiteKey& key : suiteKeys()) {
    const std::string name(key.name);
    const TomlValue* const value = reader.any(name);
    if (value == nullptr) {
      continue;
    }
    if (const std::string wanted = mismatch(key, *value); !wanted.empty()) {
      reader.complain(name, std::string("\"").append(name).append("\" must be ").append(wanted));
    } else {
      config.suite[name] = *value;
    }
  }
  reader.finish();
}

/// Whether the file is of a version that can be read; there is no sense in reading on if not.
bool checkVersion(TableReader& reader) {
  const TomlValue* const version = reader.value("version", Kind::Integer);
  if (version == nullptr) {
    reader.complain("version", "the file needs \"version = 1\" at its top");
    return false;
  }
  if (version->integer != kVersion) {
    reader.complain("version", version->integer > kVersion
                                   ? "the file is of version " + std::to_string(version->integer) +
                                         "; this orvdiff reads version 1: use a newer one"
                                   : "there is no version " + std::to_string(version->integer));
  }
  return version->integer == kVersion;
}

void readKnown(const TomlValue& table, SuiteConfig& config) {
  TableReader reader(table, "[[known]]", config.problems);
  KnownDifference known;
  known.definedAt = table.place;
  known.pair = reader.text("pair");
  known.groups = reader.texts("group");
  known.verdict = reader.text("verdict");
  known.why = reader.requiredText("why");
  known.link = reader.text("link");
  if (const TomlValue* const until = reader.value("until", Kind::Date)) {
    known.until = until->text;
  } else if (table.find("until") == nullptr) {
    reader.complain("until", "[[known]] needs \"until\", the last day on which it is accepted");
  }
  static const std::vector<std::string> kVerdicts = {"differs", "missing", "failed", "stale"};
  const auto& verdicts = kVerdicts;
  if (!known.verdict.empty() &&
      std::find(verdicts.begin(), verdicts.end(), known.verdict) == verdicts.end()) {
    reader.complain("verdict", '"' + known.verdict +
                                   "\" cannot be known: only differs, missing, failed and stale");
  }
  if (known.groups.empty() && known.verdict.empty()) {
    reader.complain("group",
                    "[[known]] needs \"group\", the ids of the changes, or \"verdict\", which "
                    "stands for any change");
  } else if (known.groups.empty() && known.pair.empty()) {
    reader.complain("pair", "[[known]] without \"group\" needs \"pair\"");
  }
  reader.finish();
  config.known.push_back(std::move(known));
}

void read(const TomlValue& document, SuiteConfig& config) {
  TableReader reader(document, "the file", config.problems);
  if (!checkVersion(reader)) {
    return;
  }
  if (const TomlValue* const suite = reader.value("suite", Kind::Table)) {
    readSuite(*suite, config);
  }
  const std::vector<const TomlValue*> formats = reader.tables("format");
  readPatterns(reader.tables("pattern"), formatNames(formats), config);
  readFormats(formats, config);
  for (const TomlValue* const table : reader.tables("known")) {
    readKnown(*table, config);
  }
  reader.finish();
}

}  // namespace

const std::vector<SuiteKey>& suiteKeys() {
  constexpr double kAny = 1e15;
  static const std::vector<SuiteKey> keys = {
      {"work", Type::Path},
      {"outputs", Type::Path},
      {"masters", Type::Text},
      {"formats", Type::Texts},
      {"sub-folders", Type::Texts},
      {"all-sub-folders", Type::Boolean},
      {"folder-suffix", Type::Text},
      {"newer-than", Type::Text},
      {"jobs", Type::Count, 1, 1024},
      {"timeout", Type::Number, 0, kAny},
      {"memory", Type::Count, 64, 4294967296.0},
      {"strict", Type::BooleanOrTexts},
      {"mask-limit", Type::Number, 0, 100},
      {"mask-sum-limit", Type::Number, 0, 100},
      {"evidence-file-limit", Type::Count, 0, 1048576},
      {"evidence-limit", Type::Count, 0, 1048576},
      {"layout-schema", Type::Path},
      {"layout-namespace", Type::Text},
  };
  return keys;
}

SuiteConfig readSuiteConfig(const std::string& path, const std::string& name, std::string content) {
  SuiteConfig config;
  config.path = path;
  config.folder = std::filesystem::path(path).parent_path();
  config.content = std::move(content);
  const TomlValue document = parseToml(config.content, name, config.problems);
  if (config.problems.empty()) {
    read(document, config);
  }
  std::stable_sort(config.problems.begin(), config.problems.end(),
                   [](const ConfigProblem& one, const ConfigProblem& other) {
                     return std::make_pair(one.place.line, one.place.column) <
                            std::make_pair(other.place.line, other.place.column);
                   });
  return config;
}

std::string pathFrom(const SuiteConfig& config, const std::string& path) {
  return (std::filesystem::path(config.folder) / path).lexically_normal();
}

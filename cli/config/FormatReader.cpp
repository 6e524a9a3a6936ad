#include "cli/config/FormatReader.h"

#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>

#include "cli/config/RuleNames.h"
#include "cli/config/TableReader.h"
#include "cli/custom/FormatList.h"
#include "cli/terminal/EditDistance.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

using Kind = TomlValue::Kind;

bool isNumber(const TomlValue& value) {
  return value.kind == Kind::Integer || value.kind == Kind::Number;
}

class FormatReader {
 public:
  FormatReader(const TomlValue& table, SuiteConfig& config)
      : m_config(config),
        m_problemsBefore(config.problems.size()),
        m_table(table),
        m_reader(table, "[[format]]", config.problems) {}

  OwnFormat read() {
    OwnFormat format;
    format.definedAt = m_table.place;
    format.name = m_reader.requiredText("name");
    format.outputFolder = m_reader.requiredText("outputs");
    format.masterFolder = m_reader.text("masters");
    format.masterTail = m_reader.requiredText("tail");
    format.comparison = comparison(m_reader.requiredText("compare"));
    m_reader.finish();
    checkWhole(format);
    return format;
  }

 private:
  /// What only the whole shows, if its parts are right.
  void checkWhole(const OwnFormat& format) {
    if (OrvDiffFormats::find(format.name) != nullptr) {
      m_reader.complain("name", "there is a format \"" + format.name +
                                    "\" already; a file can add formats, never replace one");
    }
    const std::string problem =
        m_config.problems.size() == m_problemsBefore ? problemOf(format) : std::string();
    if (!problem.empty()) {
      m_reader.complain("name", "[[format]] \"" + format.name + "\" " + problem);
    }
  }

  OwnComparison comparison(const std::string& kind) {
    using Read = OwnComparison (FormatReader::*)();
    static const std::vector<std::pair<std::string, Read>> kKinds = {
        {"bytes", &FormatReader::bytes},     {"text", &FormatReader::text},
        {"xml", &FormatReader::xml},         {"numbers", &FormatReader::numbers},
        {"csv", &FormatReader::csv},         {"json", &FormatReader::json},
        {"picture", &FormatReader::picture}, {"script", &FormatReader::script}};
    std::vector<std::string> names;
    for (const auto& [name, read] : kKinds) {
      if (name == kind) {
        return (this->*read)();
      }
      names.push_back(name);
    }
    const std::string nearest = nearestWord(kind, names);
    if (!kind.empty()) {
      m_reader.complain("compare", "nothing compares by \"" + kind + '"' +
                                       (nearest.empty() ? "; it is one of bytes, text, xml, "
                                                          "numbers, csv, json, picture, script"
                                                        : "; did you mean \"" + nearest + "\"?"));
    }
    return BytesRules();
  }

  OwnComparison bytes() { return BytesRules(); }

  OwnComparison text() { return TextRules{rules()}; }

  OwnComparison xml() {
    XmlRules rules{path("schema"), m_reader.text("namespace"), this->rules()};
    if (!rules.schema.empty() && access(rules.schema.c_str(), R_OK) != 0) {
      m_reader.complain("schema", "the schema " + rules.schema + " cannot be read");
    }
    return rules;
  }

  OwnComparison numbers() { return NumbersRules{tolerance()}; }

  OwnComparison csv() {
    CsvRules rules;
    const std::string separator = m_reader.text("separator");
    if (separator.size() > 1) {
      m_reader.complain("separator", "\"separator\" must be one ASCII character");
    } else if (!separator.empty()) {
      rules.separator = separator.front();
    }
    if (const TomlValue* const header = m_reader.value("header", Kind::Boolean)) {
      rules.hasHeader = header->boolean;
    }
    rules.ignored = m_reader.texts("ignore");
    rules.keys = m_reader.texts("keys");
    rules.tolerance = tolerance();
    if (const TomlValue* const columns = m_reader.value("columns", Kind::Table)) {
      for (const TomlMember& column : columns->members) {
        rules.ofColumn[column.key] = toleranceOf(column.value, "column " + column.key);
      }
    }
    return rules;
  }

  OwnComparison json() {
    return JsonRules{m_reader.texts("ignore"), m_reader.texts("unordered"), tolerance()};
  }

  OwnComparison picture() { return PictureRules{number("share", 0), number("distance", 0)}; }

  OwnComparison script() {
    ScriptRules rules;
    rules.command = m_reader.texts("command");
    const TomlValue* const command = m_table.find("command");
    if (command == nullptr || command->kind != Kind::Array) {
      m_reader.complain("command", "a script needs \"command\", an array: program and arguments");
    } else if (!rules.command.empty() && rules.command.front().find('/') != std::string::npos) {
      std::string& program = rules.command.front();
      program = pathFrom(m_config, program);
      if (access(program.c_str(), X_OK) != 0) {
        m_reader.complain("command", program + " is not there or not executable");
      }
    }
    rules.seconds = number("timeout", rules.seconds);
    statuses("passes", rules.passes);
    statuses("differs", rules.differs);
    return rules;
  }

  /// The patterns that `patterns` names, of the catalogue or the file.
  std::vector<OwnRule> rules() {
    std::vector<OwnRule> rules;
    for (const std::string& name : m_reader.texts("patterns")) {
      const auto own =
          std::find_if(m_config.patterns.begin(), m_config.patterns.end(),
                       [&](const OwnPattern& pattern) { return pattern.name == name; });
      if (own != m_config.patterns.end()) {
        rules.push_back({name, own->pattern});
      } else if (catalogueNames().count(name) > 0) {
        rules.push_back({name, nullptr});
      } else {
        std::vector<std::string> names(catalogueNames().begin(), catalogueNames().end());
        for (const OwnPattern& pattern : m_config.patterns) {
          names.push_back(pattern.name);
        }
        const std::string nearest = nearestWord(name, names);
        m_reader.complain("patterns",
                          "there is no pattern \"" + name + '"' +
                              (nearest.empty() ? "" : "; did you mean " + nearest + '?'));
      }
    }
    return rules;
  }

  std::string path(const std::string& key) {
    const std::string given = m_reader.text(key);
    return given.empty() ? given : pathFrom(m_config, given);
  }

  double number(const std::string& key, double otherwise) {
    const TomlValue* const value = m_reader.value(key, Kind::Number);
    return value != nullptr ? value->number : otherwise;
  }

  void statuses(const std::string& key, std::vector<int>& statuses) {
    constexpr std::int64_t kMostStatus = 255;
    const TomlValue* const value = m_reader.value(key, Kind::Array);
    if (value == nullptr) {
      return;
    }
    statuses.clear();
    for (const TomlValue& status : value->elements) {
      if (status.kind != Kind::Integer || status.integer < 0 || status.integer > kMostStatus) {
        m_reader.complain(key, '"' + key + "\" must be an array of exit statuses, 0 to 255");
        return;
      }
      statuses.push_back(static_cast<int>(status.integer));
    }
  }

  Tolerance tolerance() {
    const TomlValue* const value = m_reader.any("tolerance");
    return value != nullptr ? toleranceOf(*value, "\"tolerance\"") : Tolerance();
  }

  /// A number, which is absolute, or a table with "absolute", "relative" or both.
  Tolerance toleranceOf(const TomlValue& value, const std::string& name) {
    Tolerance tolerance;
    if (isNumber(value)) {
      tolerance.absolute = value.number;
    } else if (value.kind == Kind::Table) {
      TableReader reader(value, name, m_config.problems);
      const TomlValue* const absolute = reader.value("absolute", Kind::Number);
      const TomlValue* const relative = reader.value("relative", Kind::Number);
      tolerance.absolute = absolute != nullptr ? absolute->number : 0;
      tolerance.relative = relative != nullptr ? relative->number : 0;
      reader.finish();
    } else {
      m_config.problems.push_back(
          {value.place, name + " must be a number, or { absolute = ..., relative = ... }"});
    }
    return tolerance;
  }

  SuiteConfig& m_config;
  const std::size_t m_problemsBefore;
  const TomlValue& m_table;
  TableReader m_reader;
};

}  // namespace

std::vector<std::string> formatNames(const std::vector<const TomlValue*>& tables) {
  std::vector<std::string> names;
  for (const TomlValue* const table : tables) {
    const TomlValue* const name = table->find("name");
    if (name != nullptr && name->kind == Kind::Text) {
      names.push_back(name->text);
    }
  }
  return names;
}

void readFormats(const std::vector<const TomlValue*>& tables, SuiteConfig& config) {
  std::set<std::string> names;
  for (const TomlValue* const table : tables) {
    config.formats.push_back(FormatReader(*table, config).read());
    const OwnFormat& format = config.formats.back();
    if (!names.insert(format.name).second) {
      config.problems.push_back(
          {format.definedAt, "there is another [[format]] called \"" + format.name + '"'});
    }
  }
}

bool namesPrograms(const SuiteConfig& config) {
  return config.suite.count("work") > 0 ||
         std::any_of(config.formats.begin(), config.formats.end(), [](const OwnFormat& format) {
           return std::holds_alternative<ScriptRules>(format.comparison);
         });
}

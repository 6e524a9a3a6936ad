#include "cli/config/PatternReader.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "cli/config/RuleNames.h"
#include "cli/config/TableReader.h"
#include "cli/terminal/EditDistance.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

using Kind = TomlValue::Kind;
using Patterns = OrvDiffNormalizationPatterns;

/// "last", "first", "before NAME" or "after NAME".
bool parsePlace(const std::string& text, PatternPlace& place) {
  using Place = PatternPlace::Kind;
  constexpr std::pair<const char*, Place> kRelative[] = {{"before ", Place::Before},
                                                         {"after ", Place::After}};
  for (const auto& [word, kind] : kRelative) {
    const std::string start(word);
    if (text.rfind(start, 0) == 0 && text.size() > start.size()) {
      place = {kind, text.substr(start.size())};
      return true;
    }
  }
  place.kind = text == "first" ? Place::First : Place::Last;
  return text.empty() || text == "first" || text == "last";
}

class PatternReader {
 public:
  PatternReader(const std::vector<std::string>& ownFormats, SuiteConfig& config)
      : m_config(config), m_formats(ownFormats) {
    for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
      m_formats.emplace_back(format.name);
    }
  }

  void read(const TomlValue& table) {
    TableReader reader(table, "[[pattern]]", m_config.problems);
    OwnPattern pattern;
    pattern.definedAt = table.place;
    pattern.name = reader.requiredText("name");
    pattern.expression = reader.requiredText("expression");
    pattern.replacement = reader.text("replacement", true);
    pattern.why = reader.requiredText("why");
    readFormats(reader, pattern);
    if (!parsePlace(reader.text("place"), pattern.place)) {
      reader.complain("place",
                      "\"place\" must be \"last\", \"first\", \"before RULE\" or "
                      "\"after RULE\"");
    }
    checkName(reader, pattern.name);
    const std::string refusal = pattern.expression.empty() ? "" : compileOwnPattern(pattern);
    if (!refusal.empty()) {
      reader.complain("expression", refusal);
    }
    readExamples(reader, pattern);
    reader.finish();
    m_config.patterns.push_back(std::move(pattern));
  }

 private:
  void checkName(TableReader& reader, const std::string& name) {
    if (catalogueNames().count(name) > 0) {
      reader.complain("name", "the name \"" + name + "\" is that of a rule of the catalogue");
    } else if (!name.empty() && !m_own.insert(name).second) {
      reader.complain("name", "there is another [[pattern]] called \"" + name + '"');
    }
  }

  void readFormats(TableReader& reader, OwnPattern& pattern) {
    const bool isGiven = reader.any("formats") != nullptr;
    pattern.formats = reader.texts("formats");
    if (!isGiven || (pattern.formats.empty() && reader.any("formats")->kind == Kind::Array &&
                     reader.any("formats")->elements.empty())) {
      reader.complain("formats", "[[pattern]] needs \"formats\", those that it is added to");
    }
    for (const std::string& format : pattern.formats) {
      if (std::find(m_formats.begin(), m_formats.end(), format) == m_formats.end()) {
        const std::string nearest = nearestWord(format, m_formats);
        reader.complain("formats", "unknown format \"" + format + '"' +
                                       (nearest.empty() ? "" : "; did you mean " + nearest + '?'));
      }
    }
  }

  void readExamples(TableReader& reader, OwnPattern& pattern) {
    std::vector<OwnPattern::Example> staying;
    for (const TomlValue* const table : reader.tables("examples")) {
      TableReader example(*table, "[[pattern.examples]]", m_config.problems);
      if (table->find("stays") != nullptr) {
        const std::string text = example.text("stays");
        staying.push_back({text, text});
        check(example, pattern, staying.back());
      } else {
        const std::string before = example.requiredText("before");
        if (table->find("after") == nullptr) {
          example.complain("after", "an example needs \"before\" and \"after\", or \"stays\"");
        }
        pattern.examples.push_back({before, example.text("after", true)});
        if (pattern.examples.back().before == pattern.examples.back().after) {
          example.complain("after", "the example changes nothing; say \"stays\" if that is meant");
        } else {
          check(example, pattern, pattern.examples.back());
        }
      }
      example.finish();
    }
    if (pattern.examples.empty() || staying.empty()) {
      reader.complain("examples",
                      "[[pattern]] needs at least one [[pattern.examples]] with "
                      "\"before\" and \"after\", and one with \"stays\"");
    }
    pattern.examples.insert(pattern.examples.end(), staying.begin(), staying.end());
  }

  static void check(TableReader& reader, const OwnPattern& pattern,
                    const OwnPattern::Example& example) {
    const std::string problem =
        pattern.pattern != nullptr ? exampleProblem(pattern, example) : std::string();
    if (!problem.empty()) {
      reader.complain(example.before == example.after ? "stays" : "before",
                      "the example does not hold: " + problem);
    }
  }

  SuiteConfig& m_config;
  std::vector<std::string> m_formats;  ///< names that exist
  std::set<std::string> m_own;
};

}  // namespace

const std::set<std::string>& catalogueNames() {
  static const std::set<std::string> all = [] {
    std::set<std::string> names = {"CarriageReturn"};
    for (int id = 0; id <= Patterns::eReportSpecNamespaceVersion; ++id) {
      const auto* const pattern =
          Patterns::getPattern(static_cast<Patterns::OrvNormalizationPatternsEnum>(id));
      names.insert(Patterns::getName(*pattern));
    }
    return names;
  }();
  return all;
}

void readPatterns(const std::vector<const TomlValue*>& tables,
                  const std::vector<std::string>& ownFormats, SuiteConfig& config) {
  if (tables.empty()) {
    return;  // building the catalogue takes longer than reading the file
  }
  PatternReader reader(ownFormats, config);
  for (const TomlValue* const table : tables) {
    reader.read(*table);
  }
}

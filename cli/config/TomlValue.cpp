#include "cli/config/TomlValue.h"

#include <toml++/toml.h>
#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace {

FilePlace placeOf(const toml::source_position& position, const std::string& file) {
  return {file, position.line, position.column};
}

std::string dateText(const toml::date& date) {
  std::ostringstream text;
  text << std::setfill('0') << std::setw(4) << date.year << '-' << std::setw(2)
       << unsigned{date.month} << '-' << std::setw(2) << unsigned{date.day};
  return text.str();
}

TomlValue convert(const toml::node& node, const std::string& file);

std::vector<TomlMember> membersOf(const toml::table& table, const std::string& file) {
  std::vector<TomlMember> members;
  for (const auto& [key, node] : table) {
    members.push_back({std::string(key.str()), convert(node, file)});
    // A key says better than its value where to look, except for a table, which begins there.
    members.back().value.place = placeOf(key.source().begin, file);
  }
  std::stable_sort(members.begin(), members.end(), [](const auto& one, const auto& other) {
    const FilePlace& a = one.value.place;
    const FilePlace& b = other.value.place;
    return std::make_pair(a.line, a.column) < std::make_pair(b.line, b.column);
  });
  return members;
}

TomlValue convert(const toml::node& node, const std::string& file) {
  using Kind = TomlValue::Kind;
  TomlValue value;
  value.place = placeOf(node.source().begin, file);
  if (const toml::table* const table = node.as_table()) {
    value.kind = Kind::Table;
    value.members = membersOf(*table, file);
  } else if (const toml::array* const array = node.as_array()) {
    value.kind = Kind::Array;
    for (const toml::node& element : *array) {
      value.elements.push_back(convert(element, file));
    }
  } else if (const auto* const text = node.as_string()) {
    value.kind = Kind::Text;
    value.text = text->get();
  } else if (const auto* const integer = node.as_integer()) {
    value.kind = Kind::Integer;
    value.integer = integer->get();
    value.number = static_cast<double>(value.integer);
  } else if (const auto* const number = node.as_floating_point()) {
    value.kind = Kind::Number;
    value.number = number->get();
  } else if (const auto* const boolean = node.as_boolean()) {
    value.kind = Kind::Boolean;
    value.boolean = boolean->get();
  } else if (const auto* const date = node.as_date()) {
    value.kind = Kind::Date;
    value.text = dateText(date->get());
  }
  return value;
}

}  // namespace

const TomlValue* TomlValue::find(const std::string& key) const {
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&key](const TomlMember& member) { return member.key == key; });
  return found != members.end() ? &found->value : nullptr;
}

std::string toText(const FilePlace& place) {
  std::string text = place.file;
  if (place.line > 0) {
    text += ':' + std::to_string(place.line);
    text += place.column > 0 ? ':' + std::to_string(place.column) : "";
  }
  return text;
}

std::string toText(const ConfigProblem& problem) {
  return toText(problem.place) + ": " + problem.text;
}

TomlValue parseToml(const std::string& text, const std::string& file,
                    std::vector<ConfigProblem>& problems) {
  try {
    return convert(toml::parse(text), file);
  } catch (const toml::parse_error& error) {
    problems.push_back({placeOf(error.source().begin, file), std::string(error.description())});
    TomlValue empty;
    empty.kind = TomlValue::Kind::Table;
    empty.place.file = file;
    return empty;
  }
}

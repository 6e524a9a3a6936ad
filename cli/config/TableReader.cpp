#include "cli/config/TableReader.h"

#include <algorithm>
#include <utility>

#include "cli/terminal/EditDistance.h"

using Kind = TomlValue::Kind;

TableReader::TableReader(const TomlValue& table, std::string name,
                         std::vector<ConfigProblem>& problems)
    : m_table(table), m_name(std::move(name)), m_problems(problems) {}

const TomlValue* TableReader::any(const std::string& key) {
  m_asked.push_back(key);
  return m_table.find(key);
}

const TomlValue* TableReader::value(const std::string& key, Kind kind) {
  const TomlValue* const found = any(key);
  const bool fits = found != nullptr &&
                    (found->kind == kind || (kind == Kind::Number && found->kind == Kind::Integer));
  if (found != nullptr && !fits) {
    complain(key, '"' + key + "\" must be " + wordsFor(kind) + ", not " + wordsFor(found->kind));
  }
  return fits ? found : nullptr;
}

std::string TableReader::text(const std::string& key, bool mayBeEmpty) {
  const TomlValue* const found = value(key, Kind::Text);
  if (found != nullptr && found->text.empty() && !mayBeEmpty) {
    complain(key, '"' + key + "\" must not be empty");
  }
  return found != nullptr ? found->text : std::string();
}

std::string TableReader::requiredText(const std::string& key) {
  if (m_table.find(key) == nullptr) {
    complain(key, m_name + " needs \"" + key + '"');
  }
  return text(key);
}

std::vector<std::string> TableReader::texts(const std::string& key) {
  const TomlValue* const found = any(key);
  if (found == nullptr) {
    return {};
  }
  const std::vector<TomlValue> one = {*found};
  std::vector<std::string> texts;
  for (const TomlValue& element : found->kind == Kind::Array ? found->elements : one) {
    if (element.kind != Kind::Text || element.text.empty()) {
      complain(key, '"' + key + "\" must be a text or an array of texts, none of them empty");
      return {};
    }
    texts.push_back(element.text);
  }
  return texts;
}

std::vector<const TomlValue*> TableReader::tables(const std::string& key) {
  std::vector<const TomlValue*> tables;
  const TomlValue* const array = value(key, Kind::Array);
  if (array == nullptr) {
    return tables;
  }
  for (const TomlValue& element : array->elements) {
    if (element.kind != Kind::Table) {
      std::string text = "\"";
      text.append(key).append("\" must be an array of tables: [[").append(key).append("]]");
      complain(key, text);
      return {};
    }
    tables.push_back(&element);
  }
  return tables;
}

void TableReader::complain(const std::string& key, const std::string& text) {
  const TomlValue* const found = m_table.find(key);
  m_problems.push_back({found != nullptr ? found->place : m_table.place, text});
}

void TableReader::finish() {
  for (const TomlMember& member : m_table.members) {
    if (std::find(m_asked.begin(), m_asked.end(), member.key) == m_asked.end()) {
      const std::string nearest = nearestWord(member.key, m_asked);
      complain(member.key, "unknown key \"" + member.key + "\" in " + m_name +
                               (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?"));
    }
  }
}

const char* wordsFor(Kind kind) {
  switch (kind) {
    case Kind::Table:
      return "a table";
    case Kind::Array:
      return "an array";
    case Kind::Text:
      return "a text";
    case Kind::Integer:
      return "a whole number";
    case Kind::Number:
      return "a number";
    case Kind::Boolean:
      return "true or false";
    case Kind::Date:
      return "a date";
    case Kind::Other:
      break;
  }
  return "a time";
}

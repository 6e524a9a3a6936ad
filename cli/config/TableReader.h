#pragma once

#include <string>
#include <vector>

#include "cli/config/TomlValue.h"

/// Takes the values of a table, key by key, and notes whatever is wrong with them. In the end, the
/// keys that nobody has asked for are unknown ones.
class TableReader {
 public:
  /// `table` and `problems` must outlive the reader. `name` is for messages: "[[pattern]]".
  TableReader(const TomlValue& table, std::string name, std::vector<ConfigProblem>& problems);

  /// The value of `key`; null if there is none, or one of another kind, which is a problem. An
  /// integer is a number, too.
  const TomlValue* value(const std::string& key, TomlValue::Kind kind);

  /// The value of `key`, whatever its kind; null if there is none.
  const TomlValue* any(const std::string& key);

  /// A text; empty if there is none. An empty one in the file is a problem unless `mayBeEmpty`.
  std::string text(const std::string& key, bool mayBeEmpty = false);

  /// A text that must be there.
  std::string requiredText(const std::string& key);

  /// A text, or an array of them, none of them empty.
  std::vector<std::string> texts(const std::string& key);

  /// The tables of an array of tables.
  std::vector<const TomlValue*> tables(const std::string& key);

  /// Notes a problem at the value of `key`, or at the table if there is none.
  void complain(const std::string& key, const std::string& text);

  /// Notes the keys that were not asked for, each with the nearest one that was.
  void finish();

 private:
  const TomlValue& m_table;
  const std::string m_name;
  std::vector<ConfigProblem>& m_problems;
  std::vector<std::string> m_asked;
};

/// "a text", "an array", ...
const char* wordsFor(TomlValue::Kind kind);

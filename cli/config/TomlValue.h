#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/custom/OwnPattern.h"

struct TomlMember;

/// A value of a TOML file and where it stands. (A form of our own, so that only one file has to
/// compile the TOML library.)
struct TomlValue {
  enum class Kind { Table, Array, Text, Integer, Number, Boolean, Date, Other };

  Kind kind = Kind::Other;
  FilePlace place;
  std::string text;  ///< of a `Text`; a `Date` as "2027-01-31"
  std::int64_t integer = 0;
  double number = 0;  ///< of a `Number`, and of an `Integer`
  bool boolean = false;
  std::vector<TomlMember> members;  ///< of a `Table`, in the order of the file
  std::vector<TomlValue> elements;  ///< of an `Array`

  /// The member called `key`; null if there is none.
  const TomlValue* find(const std::string& key) const;
};

struct TomlMember {
  std::string key;
  TomlValue value;
};

/// What is wrong with a file, and where.
struct ConfigProblem {
  FilePlace place;
  std::string text;
};

/// "orvdiff.toml:12:3", with as much as is known.
std::string toText(const FilePlace& place);

/// "orvdiff.toml:12:3: unknown key ..."
std::string toText(const ConfigProblem& problem);

/// Parses a TOML document; `file` names it in places. For a syntax error, adds a problem and
/// returns an empty table.
TomlValue parseToml(const std::string& text, const std::string& file,
                    std::vector<ConfigProblem>& problems);

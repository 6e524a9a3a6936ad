#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "cli/content/Tolerance.h"
#include "cli/custom/OwnPattern.h"

// A format that a suite's own file defines: a `[[format]]`. Its files lie as those of the
// documented formats do; how they are compared is one of the structures below.

/// A pattern by which a text is normalised before it is compared.
struct OwnRule {
  std::string name;
  /// The file's own pattern; null: the catalogue's of this name, such as "ScriptElement".
  std::shared_ptr<const OrvDiffNormalizationPattern> own;
};

/// `bytes`: all bytes are the same.
struct BytesRules {};

/// `text`: the same text after normalising, carriage returns aside.
struct TextRules {
  std::vector<OwnRule> patterns;  ///< in this order
};

/// `xml`: the output is well-formed, or valid if there is a schema; then as text.
struct XmlRules {
  std::string schema;        ///< its path; empty: well-formed is enough
  std::string namespaceUri;  ///< of the documents; empty: that of the schema
  std::vector<OwnRule> patterns;
};

/// `numbers`: numbers may be off by a tolerance, what stands between them must be the same.
struct NumbersRules {
  Tolerance tolerance;
};

/// `csv`: the same columns and rows, cell by cell.
struct CsvRules {
  char separator = ',';
  bool hasHeader = true;  ///< the first row has the names of the columns; needed to name any
  std::vector<std::string> ignored;  ///< names of columns whose values do not count
  /// Names of columns that tell rows apart; rows may then be in any order. Empty: rows are compared
  /// in their order.
  std::vector<std::string> keys;
  Tolerance tolerance;                        ///< of the columns not named below
  std::map<std::string, Tolerance> ofColumn;  ///< by name, instead of `tolerance`
};

/// `json`: the same values; the order of members never counts.
///
/// Paths are written as differences show them: "$.rows[3].id", with "[*]" and ".*" for any element
/// and any member, and "..name" for a member at any depth.
struct JsonRules {
  std::vector<std::string> ignored;    ///< paths of values that need only be there
  std::vector<std::string> unordered;  ///< paths of arrays whose elements may be in any order
  Tolerance tolerance;                 ///< of all numbers
};

/// `picture`: pixels instead of bytes.
struct PictureRules {
  double share = 0;  ///< of all pixels, in per cent, that may differ
  double distance =
      0;  ///< in steps of 255, by which a pixel's samples may be off without differing
};

/// `script`: a program, run without a shell, decides by its exit status.
struct ScriptRules {
  /// The program and its arguments. "{master}" and "{output}" stand for the files, anywhere in an
  /// argument. A program with a slash is a path, any other is looked for in PATH.
  std::vector<std::string> command;
  double seconds = 60;             ///< after which it is killed, and the pair is an error
  std::vector<int> passes = {0};   ///< exit statuses
  std::vector<int> differs = {1};  ///< all others are errors
};

/// In the order of what `comparisonOf` calls them.
using OwnComparison = std::variant<BytesRules, TextRules, XmlRules, NumbersRules, CsvRules,
                                   JsonRules, PictureRules, ScriptRules>;

struct OwnFormat {
  std::string name;          ///< lower-case letters, digits and hyphens
  std::string outputFolder;  ///< its name below the output root
  std::string masterFolder;  ///< its name below "Masters"; empty: "Masters" itself
  std::string masterTail;    ///< of a master's name, after the report's: "*.csv"
  OwnComparison comparison;
  FilePlace definedAt;
};

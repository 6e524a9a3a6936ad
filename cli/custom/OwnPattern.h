#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "orvdiff/compare/OrvDiffNormalizationPattern.h"

/// Where a file says something, for messages: "orvdiff.toml:12:3".
struct FilePlace {
  std::string file;
  std::size_t line = 0;    ///< from 1; 0: the file as a whole
  std::size_t column = 0;  ///< from 1; 0: unknown
};

/// Where in the list of a format's patterns another one goes.
struct PatternPlace {
  enum class Kind { Last, First, Before, After };
  Kind kind = Kind::Last;
  std::string rule;  ///< of `Before` and `After`: a name, of the catalogue or the suite's own
};

/// A substitution that a suite's file adds to those of some formats: a `[[pattern]]`.
struct OwnPattern {
  /// What the expression must do, checked whenever the file is read.
  struct Example {
    std::string before;
    std::string after;  ///< the same for a text that must stay as it is
  };

  std::string name;
  std::string expression;   ///< in ICU's syntax
  std::string replacement;  ///< likewise; empty: matches are deleted
  std::vector<std::string> formats;
  PatternPlace place;
  std::string why;
  std::vector<Example> examples;  ///< those that change something, then those that stay
  FilePlace definedAt;
  /// Compiled and named; shared by all engines, which borrow it. Null until it is compiled.
  std::shared_ptr<const OrvDiffNormalizationPattern> pattern;
};

/// Compiles the expression and names the result. Returns why ICU refuses it; empty if it does not.
///
/// A pattern that ICU has to run gets a bound: on a text that takes longer, about a second, it
/// fails, and with it the comparison. The bound counts steps, so a text fails always or never.
std::string compileOwnPattern(OwnPattern& pattern);

/// What a compiled pattern makes of a text, carriage returns removed. Raises `VELThrowable` if it
/// fails.
std::string applyOwnPattern(const OwnPattern& pattern, const std::string& text);

/// Why an example does not hold; empty if it does.
std::string exampleProblem(const OwnPattern& pattern, const OwnPattern::Example& example);

/// Whether a compiled pattern matches nothing at all somewhere in one of its examples, or in the
/// empty text: it would then match between any two characters, or on every line.
bool matchesEmptyText(const OwnPattern& pattern);

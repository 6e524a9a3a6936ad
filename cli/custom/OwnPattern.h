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

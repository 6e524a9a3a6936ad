#pragma once

#include <memory>
#include <string>

#include "cli/probe/Variation.h"
#include "orvdiff/compare/OrvDiffNormalizationPattern.h"

/// An expression and what replaces its matches, in which nothing is special.
struct Rule {
  std::string expression;
  std::string replacement;
};

std::unique_ptr<OrvDiffNormalizationPattern> compiled(const Rule& rule);

/// What the rule makes of a text.
std::string applied(const Rule& rule, const std::string& text);

/// Whether the rule makes both sides of the variation the same.
bool makesEqual(const Rule& rule, const Variation& variation);

/// Whether `c` may stand in an expression and in a replacement: printable ASCII, which the library
/// searches for by itself, without what is special in a replacement, or a line end.
bool isUsable(char c);

#pragma once

#include <memory>
#include <string>

#include "orvdiff/compare/pattern/PatternProgram.h"

namespace orvdiff::pattern {

/// A pattern in the form that runs without ICU: every match of `program` becomes `replacement`,
/// taken literally. The replacement is never longer than a match, so no text can grow.
struct Substitution {
  std::unique_ptr<PatternProgram> program;
  std::string replacement;
};

}  // namespace orvdiff::pattern

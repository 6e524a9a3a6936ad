#pragma once

#include <cstddef>
#include <vector>

#include "orvdiff/compare/pattern/PatternParser.h"
#include "orvdiff/compare/pattern/PatternProgram.h"

namespace orvdiff::pattern {

/// What is known about an expression before it runs. Functions on a parsed expression walk its
/// groups recursively; the parser bounds how deeply groups nest.

/// The number of bytes of the shortest match.
std::size_t minimumLengthOf(const PatternNode::Sequence& sequence);

/// Whether `LinearMatcher` can run the expression on the bytes of a text and find ICU's matches.
bool isMatchableOnBytes(const PatternNode::Sequence& sequence, bool dotMatchesAll);

/// How to find the matches of `sequence`, compiled to a program that starts at `steps[start]`.
SearchHints searchHintsOf(const PatternNode::Sequence& sequence,
                          const std::vector<PatternStep>& steps, std::size_t start);

}  // namespace orvdiff::pattern

#pragma once

#include <cstddef>

#include "orvdiff/compare/pattern/PatternParser.h"

/// What can be told of a parsed expression before it is run. These walk groups recursively; the
/// parser bounds how deeply groups are nested.

/// The number of bytes of the shortest match.
std::size_t minimumLengthOf(const PatternNode::Sequence& sequence);

/// Whether `LinearMatcher` can run the expression on the bytes of a text and find ICU's matches.
bool isMatchableOnBytes(const PatternNode::Sequence& sequence, bool dotMatchesAll);

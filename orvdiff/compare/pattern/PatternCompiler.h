#pragma once

#include <memory>
#include <string_view>

#include "orvdiff/compare/pattern/PatternProgram.h"

namespace orvdiff::pattern {

/// Compiles an expression that ICU has accepted. Returns null if the expression is outside the
/// subset below or can match the empty text; ICU must run it then. Takes time and memory linear in
/// the expression's length, and a bounded stack.
///
/// The subset is what normalisation patterns are made of: literals, byte classes, ".*" and ".*?",
/// groups with alternatives, "?", "*", "+", "\b" and "\s", over the bytes of a UTF-8 text. It
/// excludes everything that needs more than bytes and positions (back references, look-around,
/// negated classes, a lone ".", non-ASCII characters) and whatever the parser is not sure of. A
/// group may be repeated only as "(a...|b...)*", where each alternative starts with a plain
/// character of its own that no repetition inside the alternative takes: "( id[0-9]+)*" is inside
/// the subset; "(a|aa)*", "(a*)*" and "([ab]c)*" are not.
std::unique_ptr<PatternProgram> compilePattern(std::string_view expression);

}  // namespace orvdiff::pattern

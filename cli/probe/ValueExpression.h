#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/probe/ValueKind.h"

/// An expression that matches all of `values`, and others of their form; nothing if there is none
/// that is not too wide. It is within what the library searches for in linear time.
std::optional<std::string> expressionFor(ValueKind kind, const std::vector<std::string>& values);

/// `text` as an expression that matches nothing else.
std::string quotedExpression(std::string_view text);

#pragma once

#include <string>

#include "cli/probe/Rule.h"
#include "cli/probe/RunTexts.h"

/// A short text, of the first run if it has one, with a value that the expression `value` matches
/// and that `rule` leaves as it is; `otherwise` if none is found soon.
std::string textThatStays(const Rule& rule, const std::string& value, const std::string& otherwise,
                          RunTexts& texts);

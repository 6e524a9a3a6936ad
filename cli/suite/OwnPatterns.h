#pragma once

#include <string_view>
#include <vector>

#include "cli/custom/OwnPattern.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Adds those of `patterns` that are for the format called `format` to its engine, in their order,
/// each at its place. The engine borrows them. Raises `CommandError`, naming the pattern's file and
/// line, if the format does not normalise texts, or has no rule of the name that a place refers to.
void addOwnPatterns(const std::vector<OwnPattern>& patterns, std::string_view format,
                    OrvDiffFileEngine& engine);

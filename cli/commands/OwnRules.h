#pragma once

#include <string>

#include "cli/custom/OwnFormat.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Prints what an own format that normalises no texts allows outputs to differ in, and, unless
/// `actual` is empty, what of it a pair of files needs.
void explainOwnRules(const OwnFormat& format, OrvDiffFileEngine& engine, const std::string& master,
                     const std::string& actual);

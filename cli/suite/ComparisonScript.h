#pragma once

#include <string>

#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Whether `engine` compares by running a script.
bool runsScript(const OrvDiffFileEngine& engine);

/// Why the comparison script of `engine` cannot run, including the path that was tried, or why one
/// of the suite's own formats lacks something else. Empty if nothing is wrong. Check this before
/// comparing: the engine itself reports every pair as different if its script is missing.
std::string scriptProblem(const OrvDiffFileEngine& engine);

/// Raises `CommandError` when a script could not be started, or its end not be awaited, since the
/// last call. Its engine calls that a difference.
void requireStartedScripts();

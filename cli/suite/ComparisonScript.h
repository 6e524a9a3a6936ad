#pragma once

#include <string>

#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Whether `engine` leaves the comparing to a script.
bool runsScript(const OrvDiffFileEngine& engine);

/// What keeps the comparison script of `engine` from running, with the path at which it was looked
/// for. Empty when nothing does, and for an engine that runs none. Without a look at that first, a
/// script that is not there would look like a difference of every pair.
std::string scriptProblem(const OrvDiffFileEngine& engine);

/// Raises `Trouble` when a script could not be started, or its end not be awaited, since the last
/// call. Its engine calls that a difference.
void requireStartedScripts();

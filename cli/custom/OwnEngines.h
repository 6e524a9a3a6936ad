#pragma once

#include <memory>
#include <string>

#include "cli/custom/OwnFormat.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Creates the engine of `format`, which it borrows, like `subFolder` (null: none). Raises
/// `CommandError` for a pattern that is not in the catalogue.
std::unique_ptr<OrvDiffFileEngine> createOwnEngine(const OwnFormat& format, const char* subFolder);

/// What keeps an engine of an own format from comparing, for people: a script that is not
/// executable, a schema that cannot be read. Empty: nothing, or another kind of engine.
std::string obstacleOf(const OrvDiffFileEngine& engine);

/// The rules by which an engine runs a program of the suite's own; null if it does not.
const ScriptRules* scriptRulesOf(const OrvDiffFileEngine& engine);

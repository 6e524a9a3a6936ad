#pragma once

#include <string>

#include "cli/commands/Verb.h"
#include "cli/suite/FormatSelection.h"

/// Adds the options that say which formats and sub-folders count, and where their files are.
void addSelection(CLI::App& verb, FormatOptions& formats);

/// Adds --work.
void addWork(CLI::App& verb, std::string& folder);

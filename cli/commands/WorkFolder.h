#pragma once

#include <string>
#include <vector>

#include "cli/commands/VerifyOptions.h"

/// Enters the folder that --work names, if any, and rewrites the other paths of `options`, which
/// are relative to the folder it leaves, so that they name the same files from there. Raises
/// `CommandError` if it cannot be entered.
void enterWorkFolder(VerifyOptions& options);

/// Raises `CommandError` for a location that does not exist, which explains what it is relative to:
/// -C changes that, --work does not.
void requireLocations(const VerifyOptions& options);

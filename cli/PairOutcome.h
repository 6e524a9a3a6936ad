#pragma once

#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"

class OrvDiffResult;

/// Prints the result of a command that compares one pair; returns the status to end with.
ExitStatus printPair(const OrvDiffResult& result, const PairOptions& options);

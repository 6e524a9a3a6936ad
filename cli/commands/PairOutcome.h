#pragma once

#include "cli/commands/CommandLine.h"
#include "cli/system/ExitStatus.h"

class ResultPrinter;
class OrvDiffResult;

/// Prints, with `printer`, the result of a command that compares one pair; returns the status to
/// end with.
ExitStatus printPair(const OrvDiffResult& result, ResultPrinter& printer);

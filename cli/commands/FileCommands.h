#pragma once

#include <optional>
#include <string>

#include "cli/commands/Options.h"
#include "cli/record/PairRecord.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/platform/OrvOutputFormat.h"

class OrvDiffResult;

// Shared by the commands that work on files named on the command line.

/// The text of a file, up to its first NUL byte.
struct InputText {
  OrvTextBuffer text;
  bool containsNul;
};

/// Reads an open file. Raises `CommandError` naming the file if it cannot be read in full.
InputText readText(const std::string& fileName, OrvFileHandle& file, Verbosity verbosity);

/// Prints what came of comparing two files, and returns the exit status it stands for.
ExitStatus printPair(const PairRecord& pair, const CommonOptions& options);

/// What a record says of the result of comparing two files.
PairRecord recordOf(const OrvDiffResult& result,
                    std::optional<OrvOutputFormat> format = std::nullopt);

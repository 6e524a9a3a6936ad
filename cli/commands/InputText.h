#pragma once

#include <string>

#include "cli/commands/CommandLine.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/compare/OrvTextBuffer.h"

/// The text of a file.
struct InputText {
  OrvTextBuffer text;
  bool isCut;  ///< the file contains a NUL, where its text ends
};

/// Reads a file that was opened. Raises `CommandError` that names it when it cannot be read whole.
InputText readText(const std::string& fileName, OrvFileHandle& file, Verbosity verbosity);

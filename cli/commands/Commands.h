#pragma once

#include "cli/commands/CommandLine.h"
#include "cli/system/ExitStatus.h"

/// The commands. Each prints what it finds on standard output, raises `CommandError` for what keeps
/// it from doing its work, and returns the status to end with.

ExitStatus run(const FormatsOptions& options);
ExitStatus run(const NormalizeOptions& options);
ExitStatus run(const CompareOptions& options);
ExitStatus run(const NumdiffOptions& options);
ExitStatus run(const VerifyOptions& options);

#pragma once

#include "cli/commands/CommandLine.h"
#include "cli/system/ExitStatus.h"

/// The commands. Each prints its findings on standard output and returns the exit status. Each
/// raises `CommandError` if it cannot do its work.

ExitStatus run(const FormatsOptions& options);
ExitStatus run(const NormalizeOptions& options);
ExitStatus run(const CompareOptions& options);
ExitStatus run(const NumdiffOptions& options);
ExitStatus run(const VerifyOptions& options);
ExitStatus run(const ShowOptions& options);
ExitStatus run(const MergeOptions& options);

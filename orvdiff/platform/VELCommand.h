#pragma once

#include "orvdiff/orvdiff_export.h"

/// The command interpreter.
struct VELCommand {
  /// Runs a command line through the interpreter and waits for its end. Returns the status that the
  /// system reports: 0 when the command exited with 0, -1 when it could not be started, else
  /// something else.
  ///
  /// Unlike the C library's `system`, it gives the command an empty standard input, so that a
  /// script that asks questions fails rather than waits for ever, and leaves the caller's handling
  /// of SIGINT alone, so that a person who interrupts the run interrupts all of it. The process
  /// must not ignore SIGCHLD: no status can be had then, and every command counts as not started.
  static int run(const char* commandLine);

  /// The `errno` of the last command of this process that could not be started or waited for, so
  /// that whoever takes a status for a verdict can tell; 0 when there was none since the last call.
  /// Any thread may call it.
  ORVDIFF_API static int takeFailure();
};

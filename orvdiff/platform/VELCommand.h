#pragma once

#include "orvdiff/orvdiff_export.h"

namespace orvdiff::host {

/// The command interpreter.
struct VELCommand {
  /// Runs a command line through the interpreter and waits for its end. Returns the system's wait
  /// status: 0 if the command exited with 0, -1 if it could not be started, otherwise non-zero.
  ///
  /// Unlike the C library's `system`, it gives the command an empty standard input, so a script
  /// that asks a question fails instead of waiting forever, and leaves the handling of SIGINT
  /// alone, so Ctrl-C interrupts the whole run. The process must not ignore SIGCHLD: the system
  /// then keeps no status, and every command counts as not started.
  static int run(const char* commandLine);

  /// The `errno` of the last command of this process that could not be started or waited for, so
  /// that whoever takes a status for a verdict can tell; 0 when there was none since the last call.
  /// Any thread may call it.
  ORVDIFF_API static int takeFailure();
};

}  // namespace orvdiff::host

using orvdiff::host::VELCommand;

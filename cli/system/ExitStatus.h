#pragma once

/// The program's exit statuses, explained in docs/exit-codes.md. Scripts rely on the numbers.
enum ExitStatus : int {
  kExitPassed = 0,         ///< everything was done, and every pair passed
  kExitNotPassed = 1,      ///< a pair differs, failed or lacks a file
  kExitTrouble = 2,        ///< an error: usage, files, an engine that raised an exception
  kExitInterrupted = 130,  ///< stopped by Ctrl-C; results so far were reported
  kExitTerminated = 143,   ///< stopped by SIGTERM; results so far were reported
};

#pragma once

/// What the program's exit status says. Scripts rely on the numbers; docs/exit-codes.md explains
/// them.
enum ExitStatus : int {
  kExitPassed = 0,     ///< all that was asked for was done, and every pair passed
  kExitNotPassed = 1,  ///< a pair differs, failed, or misses a file
  kExitTrouble = 2,    ///< the answer is not to be relied on: usage, files, an engine that raised
  kExitInterrupted = 130,  ///< stopped by Ctrl-C; what was done until then has been reported
  kExitTerminated = 143,   ///< stopped by SIGTERM, likewise
};

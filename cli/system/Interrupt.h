#pragma once

#include <array>
#include <csignal>
#include <optional>

#include "cli/system/ExitStatus.h"

/// While one lives, Ctrl-C (SIGINT) and SIGTERM only ask the program to stop; a second one ends it
/// at once.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  /// Whether there is a reason to stop: `stopStatus` says which.
  static bool isStopWanted();

 private:
  std::array<struct sigaction, 2> m_former = {};
};

/// Makes a write into a pipe that nobody reads any more, and one beyond the limit of a file's size,
/// an error as any other instead of the program's end. Programs that it starts are not affected.
void outliveFailedWrites();

/// Whether a pipe that the program writes to has lost its reader.
bool isReaderGone();

/// The status to end with when the program was asked to stop since it started, or what it writes is
/// no longer read.
std::optional<ExitStatus> stopStatus();

/// Raised between two pairs to end a run that the user has stopped.
struct Interrupted {};

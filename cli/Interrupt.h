#pragma once

#include <csignal>

/// While one lives, Ctrl-C only asks the program to stop; a second one ends it at once.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  /// Whether Ctrl-C was pressed since the program started.
  static bool isStopWanted();

 private:
  struct sigaction m_former = {};
};

/// Raised between two pairs to end a run that the user has stopped.
struct Interrupted {};

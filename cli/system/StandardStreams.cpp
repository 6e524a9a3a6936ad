#include "cli/system/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"

void occupyStandardStreams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
    descriptor = open("/dev/null", O_RDONLY);
  }
  close(descriptor);
}

ExitStatus finishOutput(ExitStatus status) {
  std::cout.flush();
  const bool closed = close(STDOUT_FILENO) == 0;  // some file systems report a full disk only now
  if (std::cout && closed) {
    return status;
  }
  if (isReaderGone()) {
    return stopStatus().value_or(kExitTrouble);
  }
  throw CommandError("standard output could not be written");
}

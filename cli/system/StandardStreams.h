#pragma once

#include "cli/system/ExitStatus.h"

/// Makes sure that no file that is opened later takes the place of a standard stream that is
/// closed, and gets what was meant for that stream.
void occupyStandardStreams();

/// Sends everything that was printed, closes standard output, and returns the status that the
/// program ends with: `status`, unless the reader of standard output has gone. Raises
/// `CommandError` when not everything could be written.
ExitStatus finishOutput(ExitStatus status);

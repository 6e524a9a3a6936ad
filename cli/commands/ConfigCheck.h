#pragma once

#include "cli/commands/VerifyOptions.h"

/// Says what is wrong with the suite's file for `options.locations`, everything at once: what keeps
/// it from being read, patterns that match the empty text, and patterns that mask more than the
/// limits allow on the suite's masters. Raises `CommandError` if there is no file.
ExitStatus checkConfig(VerifyOptions options);

#pragma once

#include "cli/commands/VerifyOptions.h"

/// The options for verifying again what did not pass in the record `options.failedRecord`: formats,
/// and where their files are, come from the record. Enters the working folder of the record's run;
/// files that `options` names stay those of the folder the process was in.
///
/// Raises `CommandError` for a record or folder that cannot be used, and for options that say
/// otherwise what to verify.
VerifyOptions optionsForFailed(VerifyOptions options);

#pragma once

/// How `action` ends for a host that has its own classes by the names of our stand-ins: "own error"
/// if it raises the host's `VELThrowable`, "another error", or "nothing".
const char* outcomeForHost(void (*action)());

/// Raises the host's `VELAssertError`.
void raiseErrorOfHost();

/// How often services of the host were called.
int callsOfHost();

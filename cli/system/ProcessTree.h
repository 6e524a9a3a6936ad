#pragma once

#include <sys/types.h>

/// Kills `root` and everything it has started, directly or not. All are stopped first, so that none
/// can start another or hand a child on to somebody else while the tree is read. What a process
/// gave away before, by ending after it forked, is found only if `root` adopts orphans
/// (`adoptOrphans`). The caller still waits for `root`.
void killProcessTree(pid_t root) noexcept;

/// Kills everything that this process has started and that still runs.
void killDescendants() noexcept;

/// Makes this process the parent of its descendants' orphans.
void adoptOrphans();

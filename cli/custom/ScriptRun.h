#pragma once

#include <string>

#include "cli/custom/OwnFormat.h"

/// Runs the program of `rules` on two files and waits for it. Its standard input is empty, its
/// output is the process's. No shell is involved: whatever the files are called, each placeholder
/// becomes part of one argument; a name that starts with "-" gets "./" in front.
///
/// True if the exit status is one that passes, false if it is one that differs. Raises
/// `CommandError` for any other end, a program that cannot be started, and one that takes longer
/// than allowed; that one is killed with everything it has started.
bool runScript(const ScriptRules& rules, const std::string& master, const std::string& output);

/// Why the program cannot run, for people; empty: it can.
std::string programProblem(const ScriptRules& rules);

#pragma once

#include <string>

#include "cli/review/PairFiles.h"
#include "cli/terminal/Screen.h"

/// Shows the files of a pair in $ORVDIFF_VIEWER, a program and its arguments in the words of the
/// shell, to which master and output are added. Without it, the system's viewer shows what is no
/// text. The program has the terminal until it ends. Returns a printable sentence about what went
/// wrong; empty if nothing has.
std::string showInViewer(Screen& screen, const PairFiles::Paths& files, bool isText);

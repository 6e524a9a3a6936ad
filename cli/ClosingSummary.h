#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "cli/Tally.h"
#include "cli/Terminal.h"

/// What came out of a run.
struct RunTotals {
  std::size_t reports = 0;  ///< that the run was to verify
  std::size_t done = 0;     ///< that it did verify; fewer when it was interrupted
  Tally pairs;
  std::size_t errors = 0;  ///< reports and formats that could not be verified to the end
  std::vector<std::string> unverified;  ///< reports, among those done, that no pair belongs to
  std::vector<std::string> unsaved;     ///< files that could not be saved
  bool interrupted = false;
  std::chrono::duration<double> time{};
};

/// Prints the counts as one line on `std::cout`, and before it, unless quiet, which reports no
/// format has a master for. What was not done as asked goes to standard error.
void printClosingSummary(const RunTotals& totals, Verbosity verbosity, const Palette& palette);

/// The status that a run with these totals ends with. With `allowNone`, no pair is no trouble.
ExitStatus exitStatusOf(const RunTotals& totals, bool allowNone);

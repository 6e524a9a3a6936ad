#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "cli/record/RunRecord.h"
#include "cli/report/Tally.h"
#include "cli/suite/Finding.h"
#include "cli/system/ExitStatus.h"
#include "cli/terminal/Terminal.h"

/// What came out of a run.
struct RunTotals {
  std::size_t reports = 0;  ///< that the run was to verify
  std::size_t done = 0;     ///< that it verified to the end; fewer when it was interrupted
  Tally pairs;
  std::vector<std::string> unverified;      ///< reports, among those done, that no pair belongs to
  std::vector<std::string> emptyLocations;  ///< at which no report was found
  std::vector<std::string> uncompared;  ///< what kept pairs from being compared, a sentence each
  std::vector<std::string> unsaved;     ///< files that could not be saved
  std::vector<std::string> incomplete;  ///< logs that miss a result, a sentence each
  std::vector<FindingTotal> findings;   ///< what else the run has to account for
  std::vector<std::string> remarks;     ///< what is worth knowing, but no trouble
  std::vector<KnownUse> known;          ///< of a shard, what only all together can judge
  bool interrupted = false;
  std::chrono::duration<double> time{};
};

/// What kept the run from verifying all that it was to, besides results and errors: a sentence
/// each. With `allowNone`, finding nothing to verify is none of it.
std::vector<std::string> findProblems(const RunTotals& totals, bool allowNone);

/// Prints a line for each known difference that pairs show.
void printKnown(const Tally& pairs);

/// Says each on standard error.
void printProblems(const std::vector<std::string>& problems);

/// Prints the counts as one line on `std::cout`, and before it, unless quiet, which reports no
/// format has a master for and what else there is to account for. Says that all passed only if
/// there is nothing. The problems follow.
void printClosingSummary(const RunTotals& totals, const std::vector<std::string>& problems,
                         Verbosity verbosity, const Palette& palette);

/// The status that a run with these totals and problems ends with.
ExitStatus exitStatusOf(const RunTotals& totals, const std::vector<std::string>& problems);

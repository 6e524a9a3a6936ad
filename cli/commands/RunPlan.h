#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/VerifyOptions.h"
#include "cli/suite/ReportFinder.h"
#include "cli/workers/WantedPairs.h"

/// What a run is to verify: everything at its locations, one share of that, or what did not pass
/// in an earlier run.
struct RunPlan {
  FoundReports found;                    ///< at the locations
  std::vector<std::string> reports;      ///< those of `found` to verify, sorted
  std::optional<WantedPairs> onlyPairs;  ///< none: all
  std::size_t onlyCount = 0;             ///< of `onlyPairs`
  std::string announcement;  ///< what a person should know about the selection; may be empty
  std::vector<std::string> uncompared;  ///< sentences on what the run will miss

  /// Whether there is nothing to verify because everything had passed.
  bool isDone() const { return onlyPairs && onlyPairs->empty(); }

  /// The only pairs to verify; null: all.
  const WantedPairs* wanted() const { return onlyPairs ? &*onlyPairs : nullptr; }
};

/// Finds the reports. Raises `CommandError` for locations, shares and records that cannot be used.
RunPlan planRun(const VerifyOptions& options);

/// Tells the suite that a run belongs to: shards of one suite, run with the same options and
/// suite's file (`configHash`, empty without one), agree.
std::string suiteHash(const FoundReports& found, const FormatOptions& formats,
                      const std::string& configHash);

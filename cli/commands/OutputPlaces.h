#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/CommandLine.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"
#include "cli/system/OutputPlace.h"

/// The files that a run writes under names of the user's choice.
struct OutputPlaces {
  /// Those of `options`; none for a mere list. Raises `CommandError` also when both are one file.
  explicit OutputPlaces(const VerifyOptions& options);

  /// Raises `CommandError` when one of the places is a file that the run reads, or writes
  /// otherwise.
  void requireFree(const VerifyOptions& options, const FoundReports& found,
                   const std::vector<SelectedFormat>& formats) const;

  std::optional<OutputPlace> harnessLog;
  std::optional<OutputPlace> summary;  ///< none also when standard output gets it

 private:
  void requireOther(const std::string& path, const char* role) const;
  void requireNoPair(const VerifyOptions& options, const std::string& report,
                     const SelectedFormat& selected) const;
};

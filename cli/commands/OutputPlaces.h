#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/VerifyOptions.h"
#include "cli/report/ReportFiles.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"
#include "cli/system/OutputPlace.h"

/// The output files that the user named: summary, harness log and reports.
struct OutputPlaces {
  /// Opens the files that `options` names; none with --list. Raises `CommandError` if one cannot be
  /// written, or if two are the same file.
  explicit OutputPlaces(const VerifyOptions& options);

  /// Raises `CommandError` if one of them is a file that the run reads, or writes for another
  /// purpose.
  void requireFree(const VerifyOptions& options, const FoundReports& found,
                   const std::vector<SelectedFormat>& formats) const;

  std::optional<OutputPlace> harnessLog;
  std::optional<OutputPlace> summary;  ///< also empty if it goes to standard output
  std::optional<ReportFiles> reports;  ///< none with --list

 private:
  std::vector<const OutputPlace*> all() const;
  void requireOther(const std::string& path, const char* role) const;
  void requireNoPair(const VerifyOptions& options, const std::string& report,
                     const SelectedFormat& selected) const;
};

#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A report's path without its extension. Reports with the same stem share their masters.
std::string_view stemOf(std::string_view report);

/// The reports to verify.
struct FoundReports {
  /// Paths, sorted and without duplicates. A name comes before its own prefixes (Revenue_2 before
  /// Revenue), so that a master which both reports find is first found by the one it counts for.
  std::vector<std::string> reports;
  /// Reports that were not asked for, but may own masters of a report that was named by its file:
  /// they are in its folder and their names start with its name.
  std::vector<std::string> neighbours;
  std::vector<std::string> emptyLocations;  ///< folders without a report
};

/// Finds the reports at `locations`.
///
/// A location is a report file, or a folder that is searched recursively for reports: regular files
/// next to a folder "Masters". Follows links. Skips hidden files and folders, and the contents of
/// "Masters" folders.
///
/// Raises `CommandError` for a location that does not exist, a file or folder that cannot be read,
/// and a dangling link: skipping one would go unnoticed.
FoundReports findReports(const std::vector<std::string>& locations);

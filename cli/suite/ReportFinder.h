#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A report's path without the extension; reports that differ in it only share their masters.
std::string_view stemOf(std::string_view report);

/// What is to be verified.
struct FoundReports {
  /// Paths, sorted, each report once however often it is named. A longer name comes before its
  /// beginnings (Revenue_2 before Revenue), so that a master that both find is found first by the
  /// report that it counts for.
  std::vector<std::string> reports;
  /// Paths of reports that were not named themselves and stand beside one that was named by its own
  /// file, with whose name theirs begin.
  std::vector<std::string> neighbours;
  std::vector<std::string> emptyLocations;  ///< folders that hold no report
};

/// The reports that `locations` name.
///
/// A location is a report's own file, or a folder, which is searched with all its folders: there, a
/// report is a regular file that stands beside a folder "Masters". Links to files and folders are
/// followed. Hidden files and folders, and what lies in "Masters" folders, are passed over.
///
/// Raises `CommandError` for a location that is not there, for a file or folder that cannot be
/// read, and for a link that leads nowhere: leaving it out would pass unnoticed.
FoundReports findReports(const std::vector<std::string>& locations);

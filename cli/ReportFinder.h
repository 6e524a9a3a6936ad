#pragma once

#include <string>
#include <vector>

/// What is to be verified.
struct FoundReports {
  std::vector<std::string> reports;  ///< paths, sorted, each report once however often it is named
  /// Paths of reports that stand beside those that were named by their own file, and were not.
  std::vector<std::string> neighbours;
  std::vector<std::string> emptyLocations;  ///< folders that hold no report
};

/// The reports that `locations` name.
///
/// A location is a report's own file, or a folder, which is searched with all its folders: there, a
/// report is a regular file that stands beside a folder "Masters". Links to files and folders are
/// followed. Hidden files and folders, and what lies in "Masters" folders, are passed over.
///
/// Raises `Trouble` for a location that is not there, for a file or folder that cannot be read, and
/// for a link that leads nowhere: leaving it out would pass unnoticed.
FoundReports findReports(const std::vector<std::string>& locations);

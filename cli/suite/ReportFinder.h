#pragma once

#include <string>
#include <vector>

/// The reports to verify.
struct FoundReports {
  /// Paths, sorted and without duplicates.
  std::vector<std::string> reports;
  /// The same reports, as paths relative to the location at which each was first found.
  std::vector<std::string> pathsInLocation;
  /// Reports that were not asked for, but may own masters of a report that was named by its file:
  /// they are in its folder and their names start with its name.
  std::vector<std::string> neighbours;
  std::vector<std::string> emptyLocations;  ///< folders without a report
  std::vector<std::string> masterFolders;  ///< every folder "Masters" in a location, reports or not
  /// Folders that would be called "Masters" if it were not for the case of their names.
  std::vector<std::string> misnamedMasterFolders;
  bool isWholeSuite =
      true;  ///< the locations are folders, and not obviously part of a larger suite
};

/// Finds the reports at `locations`.
///
/// A location is a report file, or a folder that is searched recursively for reports: regular files
/// next to a folder "Masters". Follows links. Skips hidden files and folders, and the contents of
/// "Masters" folders. The suite's own file is no report.
///
/// Raises `CommandError` for a location that does not exist, a file or folder that cannot be read,
/// and a dangling link: skipping one would go unnoticed.
FoundReports findReports(const std::vector<std::string>& locations);

#pragma once

#include <string>
#include <vector>

/// The reports that `locations` name, sorted by path, each once however often it is named.
///
/// A location is a report's own file, or a folder, which is searched with all its folders: there, a
/// report is a regular file that stands beside a folder "Masters". Links to files and folders are
/// followed. Hidden files and folders, and what lies in "Masters" folders, are passed over.
///
/// Raises `Trouble` for a location that is not there, and for a file or folder that cannot be read:
/// leaving it out would pass unnoticed.
std::vector<std::string> findReports(const std::vector<std::string>& locations);

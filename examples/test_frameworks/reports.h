#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

/// The reports below a folder, sorted: the files that have a folder "Masters" beside them.
inline std::vector<std::string> reportsBelow(const std::filesystem::path& folder) {
  std::vector<std::string> reports;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && exists(entry.path().parent_path() / "Masters")) {
      reports.push_back(entry.path());
    }
  }
  std::sort(reports.begin(), reports.end());
  return reports;
}

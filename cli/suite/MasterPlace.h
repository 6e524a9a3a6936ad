#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/suite/ReportFinder.h"
#include "cli/suite/StemIndex.h"

/// A folder of reports that keeps its masters in some folder "Masters".
struct ReportHome {
  std::string folder;  ///< with its slash; empty: the working folder
  StemIndex stems;     ///< names of its reports; those of neighbours are numbered after the others
};

/// The path of "Masters" beside the reports in `folder`, as engines write it.
std::string mastersBeside(const std::string& folder);

/// A folder "Masters". Links can make it that of several folders of reports.
struct MasterPlace {
  std::vector<ReportHome> homes;
  bool isSearched = false;  ///< all reports beside it were looked for

  /// The path of a file or folder in it; `folder`, below "Masters", and `name` may be empty.
  std::string pathOf(const std::string& folder, std::string_view name = {}) const;

  /// The report with the longest name that `name` begins with, or nothing.
  std::optional<std::uint32_t> ownerOf(std::string_view name) const;
};

/// A file in a folder "Masters".
struct MasterFile {
  const MasterPlace& place;
  const std::string& folder;  ///< below "Masters"
  std::string_view name;

  std::string path() const { return place.pathOf(folder, name); }
};

/// The folders of masters that belong to what was found, in the order of their paths.
std::vector<MasterPlace> findMasterPlaces(const FoundReports& found);

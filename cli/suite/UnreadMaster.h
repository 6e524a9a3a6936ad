#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "cli/suite/MasterPlace.h"
#include "cli/suite/SuiteInventory.h"

/// Says why a file among masters is not compared: the first reason that applies, from those that an
/// option would do away with to those for which somebody has to move or rename files.
class UnreadMaster {
 public:
  explicit UnreadMaster(const InventoryRequest& request) : m_request(request) {}

  /// Nothing if the file is none of the run's business. For files only that no selected format
  /// compares for any report.
  std::optional<Finding> explain(const MasterFile& file);

 private:
  std::optional<Finding> byReport(const MasterFile& file);
  std::optional<Finding> byFormat(const MasterFile& file) const;
  std::optional<Finding> bySuffix(const MasterFile& file) const;
  std::optional<Finding> bySubFolder(const MasterFile& file) const;
  std::optional<Finding> byCase(const MasterFile& file) const;

  bool isConcerned(const MasterRule& rule) const;
  bool isSelected(std::string_view format, const std::string& subFolder) const;
  const std::string* reportNamedLike(const MasterFile& file);

  const InventoryRequest& m_request;
  std::map<const ReportHome*, StemIndex> m_foldedStems;
};

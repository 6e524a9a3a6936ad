#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/suite/ExpectedOutputs.h"
#include "cli/suite/StemIndex.h"
#include "cli/suite/SuiteInventory.h"

/// Goes through the output folders of the selected formats and tells of outputs that no master asks
/// for, and of what earlier runs left there.
class OutputInventory {
 public:
  /// All arguments must outlive the object.
  OutputInventory(const InventoryRequest& request, const FindingSink& sink,
                  const ExpectedOutputs& expected);

  void take();

 private:
  using Names = ExpectedOutputs::mapped_type;
  struct Folder {
    std::string path;
    std::set<std::string> tails;  ///< of the names of outputs, folded
    const Names& expected;
    std::optional<std::map<std::string, const std::string*>> folded{};  ///< expected names
  };

  void take(Folder& folder);
  void take(Folder& folder, std::string_view name);
  void takeLeftover(const Folder& folder, const std::string& path, std::string_view name);
  bool isToBeTold(std::string_view name);
  const std::string* expectedLike(Folder& folder, std::string_view name) const;

  const InventoryRequest& m_request;
  const FindingSink& m_sink;
  const ExpectedOutputs& m_expected;
  std::optional<StemIndex> m_reports;  ///< of all folders
};

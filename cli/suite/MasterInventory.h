#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "cli/suite/ExpectedOutputs.h"
#include "cli/suite/FolderReader.h"
#include "cli/suite/MasterPlace.h"
#include "cli/suite/SuiteInventory.h"
#include "cli/suite/UnreadMaster.h"

/// Goes through the folders of masters, tells of every file that is not compared, and collects
/// which outputs the others ask for.
class MasterInventory {
 public:
  /// All arguments must outlive the object.
  MasterInventory(const InventoryRequest& request, const FindingSink& sink,
                  const std::vector<MasterPlace>& places, ExpectedOutputs& expected);

  void take();

 private:
  void walk(const MasterPlace& place, const std::string& folder, std::set<FolderId>& walked);
  void take(const MasterFile& file);
  bool isCompared(const MasterFile& file);
  bool isComparedFor(const ReportHome& home, const MasterRule& rule, const MasterFile& file,
                     std::string& claimers);
  void expect(const ReportHome& home, const MasterRule& rule, const MasterFile& file,
              std::uint32_t report);
  bool isToBeTold(const MasterFile& file) const;

  const InventoryRequest& m_request;
  const FindingSink& m_sink;
  const std::vector<MasterPlace>& m_places;
  ExpectedOutputs& m_expected;
  UnreadMaster m_unread;
};

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/suite/Finding.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/MasterRules.h"
#include "cli/suite/PairLedger.h"
#include "cli/suite/ReportFinder.h"
#include "cli/suite/SharedPictures.h"

/// Which files a run has to account for. What was not asked for is left alone: a master that was
/// filtered out is no orphan.
struct InventoryScope {
  std::vector<bool> isAsked;  ///< of the reports found, which ones to account for
  bool saysUnclaimed = true;  ///< also what belongs to no report; of shards, only the first does
  bool isWholeSuite = true;   ///< an output that belongs to no report found belongs to none at all
  bool isOfSomeFormats = false;  ///< the user named formats, so others are none of the run's

  bool asksFor(std::uint32_t report) const { return report < isAsked.size() && isAsked[report]; }
};

/// Hears of each master that belongs to an asked report, once for every format that compares it.
using MasterVisit =
    std::function<void(const MasterRule& rule, const std::string& master, std::uint32_t report)>;

/// What to take stock of. Everything must outlive the call.
struct InventoryRequest {
  const FoundReports& found;
  const std::vector<SelectedFormat>& formats;
  const MasterRules& rules;
  const SharedPictures& pictures;
  const InventoryScope& scope;
  const PairLedger* compared = nullptr;  ///< null: nothing was compared
  bool removesLeftovers = false;         ///< normalised texts of pairs that pass now
  MasterVisit visit{};                   ///< may be empty
};

/// Reads every folder of masters and every output folder of the selected formats once, and tells
/// `sink` of each file that the run does not account for. Takes memory for the names of expected
/// outputs, whatever else the folders hold. Raises nothing but for lack of memory: a folder that
/// cannot be read is a finding.
void takeInventory(const InventoryRequest& request, const FindingSink& sink);

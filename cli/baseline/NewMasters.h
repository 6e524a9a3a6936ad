#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/suite/MasterRules.h"
#include "cli/suite/ReportFinder.h"
#include "cli/suite/StemIndex.h"

/// Where the master of an output would be.
struct NewMaster {
  std::string master;  ///< path; empty if nobody can tell
  std::string format;
  std::string why;  ///< nobody can tell
};

/// Says for outputs without a master where theirs would have to be, by the layout of their formats:
/// beside the report with the longest name that the output's name begins with, as a run would find
/// it.
class NewMasters {
 public:
  /// All arguments must outlive the object.
  NewMasters(const FoundReports& found, const MasterRules& rules);

  NewMaster masterFor(const std::string& output) const;

 private:
  std::string masterBy(const MasterRule& rule, std::string_view name, std::string& why) const;

  const FoundReports& m_found;
  const MasterRules& m_rules;
  StemIndex m_stems;  ///< of all folders
};

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/suite/Finding.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/MasterRules.h"
#include "cli/suite/ReportFinder.h"

/// What an audit found, in the order of kinds, then paths.
struct AuditResult {
  std::vector<Finding> findings;
  std::uint64_t reports = 0;
  std::uint64_t masters = 0;

  /// A normalisation without work is worth knowing, but nothing is wrong with the suite.
  std::uint64_t faults() const;

  bool holds(FindingKind kind) const;
};

/// A suite to look at without comparing anything.
class SuiteAudit {
 public:
  /// Finds the reports at `locations`. Completes the sub-folders of `formats`, which must outlive
  /// the object. Raises `CommandError` for locations and formats that cannot be used.
  SuiteAudit(const std::vector<std::string>& locations, FormatOptions& formats);

  const FoundReports& found() const { return m_found; }
  const MasterRules& rules() const { return *m_rules; }

  /// Which files belong to nothing; unless `withMasters` is false, also what is wrong with masters
  /// themselves, all of which it then reads.
  AuditResult take(bool withMasters) const;

 private:
  FormatOptions& m_options;
  FoundReports m_found;
  std::vector<SelectedFormat> m_formats;
  std::optional<MasterRules> m_rules;
};

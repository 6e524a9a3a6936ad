#include "cli/commands/SuiteAudit.h"

#include <algorithm>
#include <tuple>

#include "cli/commands/SubFolders.h"
#include "cli/suite/MasterAudit.h"
#include "cli/suite/SuiteInventory.h"

std::uint64_t AuditResult::faults() const {
  return static_cast<std::uint64_t>(
      std::count_if(findings.begin(), findings.end(),
                    [](const Finding& finding) { return finding.kind != FindingKind::Pattern; }));
}

bool AuditResult::holds(FindingKind kind) const {
  return std::any_of(findings.begin(), findings.end(),
                     [kind](const Finding& finding) { return finding.kind == kind; });
}

SuiteAudit::SuiteAudit(const std::vector<std::string>& locations, FormatOptions& formats)
    : m_options(formats), m_formats(selectFormats(formats)) {
  m_found = findReports(locations);
  if (addSubFolders(formats, m_formats, m_found)) {
    m_formats = selectFormats(formats);
  }
  m_rules.emplace(m_formats, formats);
}

AuditResult SuiteAudit::take(bool withMasters) const {
  const SharedPictures pictures(m_formats, m_options.names);
  InventoryScope scope;
  scope.isAsked.assign(m_found.reports.size(), true);
  scope.isWholeSuite = m_found.isWholeSuite;
  scope.isOfSomeFormats = !m_options.names.empty();
  AuditResult result;
  const FindingSink sink = [&result](const Finding& finding) {
    result.findings.push_back(finding);
  };
  MasterAudit masters(m_found, sink);
  const MasterVisit visit = [&masters](const MasterRule& rule, const std::string& master,
                                       std::uint32_t report) {
    masters.visit(rule, master, report);
  };
  takeInventory({m_found, m_formats, *m_rules, pictures, scope, nullptr, false,
                 withMasters ? visit : MasterVisit()},
                sink);
  if (withMasters) {
    masters.finish(scope.isOfSomeFormats);
  }
  std::sort(result.findings.begin(), result.findings.end(),
            [](const Finding& one, const Finding& other) {
              return std::tie(one.kind, one.path, one.detail) <
                     std::tie(other.kind, other.path, other.detail);
            });
  result.reports = m_found.reports.size();
  result.masters = masters.masters();
  return result;
}

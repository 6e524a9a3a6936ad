#include "cli/commands/Accounting.h"

#include <algorithm>
#include <sstream>

#include "cli/suite/MasterRules.h"
#include "cli/suite/Shard.h"
#include "cli/suite/SuiteInventory.h"
#include "cli/system/CommandError.h"

namespace {

/// The reports to verify among those found; both are sorted alike.
std::vector<bool> askedReports(const RunPlan& plan) {
  std::vector<bool> isAsked;
  std::size_t next = 0;
  for (const std::string& report : plan.found.reports) {
    isAsked.push_back(next < plan.reports.size() && plan.reports[next] == report);
    next += isAsked.back() ? 1 : 0;
  }
  return isAsked;
}

InventoryScope scopeOf(const VerifyOptions& options, const RunPlan& plan) {
  InventoryScope scope;
  scope.isAsked = askedReports(plan);
  // What belongs to no report belongs to no shard: the first one tells of it for all.
  scope.saysUnclaimed = options.shard.empty() || parseShard(options.shard).index == 1;
  scope.isWholeSuite = plan.found.isWholeSuite;
  scope.isOfSomeFormats = !options.formats.names.empty();
  return scope;
}

}  // namespace

std::set<FindingKind> Accounting::strictKinds(const std::string& keys) {
  std::set<FindingKind> kinds;
  std::istringstream words(keys);
  for (std::string word; std::getline(words, word, ',');) {
    if (word == "all") {
      kinds.insert(kindsOfRuns().begin(), kindsOfRuns().end());
    } else if (const auto kind = kindFor(word); kind && *kind < FindingKind::Unreadable) {
      kinds.insert(*kind);
    } else {
      std::string known = "all";
      for (const FindingKind each : kindsOfRuns()) {
        known += ", " + std::string(keyOf(each));
      }
      throw CommandError(("--strict=" + word).append(" is none of: ").append(known));
    }
  }
  return kinds;
}

void Accounting::note(const PairResult& pair) {
  const PairRecord& record = pair.record;
  if (record.master.empty()) {
    return;  // masters that could not be listed; each of them will be found not to be compared
  }
  m_subFolders.insert(record.subFolder);
  m_compared.add(record.format, record.master, record.output, record.verdict == Verdict::Passed);
  if (pair.comparedNothing) {
    m_findings.add({FindingKind::Vacuous, record.master, record.format});
  }
  if (record.mask) {
    m_findings.add({FindingKind::Mask, record.master, record.format});
  }
  if (record.verdict == Verdict::Stale) {
    m_findings.add({FindingKind::Stale, record.output, {}});
  } else if (record.verdict == Verdict::Partly) {
    m_findings.add({FindingKind::Partly, record.master, {}});
  }
}

void Accounting::close(const VerifyOptions& options, const RunPlan& plan,
                       const std::vector<SelectedFormat>& formats, const SharedPictures& pictures,
                       RunTotals& totals) {
  m_compared.close();
  if (options.shard.empty() && options.formats.names.empty() && !options.formats.allSubFolders &&
      !m_subFolders.empty() && !plan.onlyPairs) {
    requireSubFolders(options.formats.subFolders, totals);
  }
  const bool takesUpPairs = plan.onlyPairs.has_value();  // all else is none of the run's business
  if (!takesUpPairs) {
    addInventory(options, plan, formats, pictures, totals);
  }
  if (!takesUpPairs && options.formats.names.empty()) {
    for (const std::string& report : totals.unverified) {
      m_findings.add({FindingKind::Unverified, report, {}});
    }
  }
  totals.findings = m_findings.totals();
}

void Accounting::addInventory(const VerifyOptions& options, const RunPlan& plan,
                              const std::vector<SelectedFormat>& formats,
                              const SharedPictures& pictures, RunTotals& totals) {
  const MasterRules rules(formats, options.formats);
  const InventoryScope scope = scopeOf(options, plan);
  takeInventory({plan.found, formats, rules, pictures, scope, &m_compared, options.saveNormalized},
                [&](const Finding& finding) {
                  if (finding.kind == FindingKind::Unreadable) {
                    totals.uncompared.push_back("the folder " + finding.path +
                                                " cannot be read: " + finding.detail);
                  } else {
                    m_findings.add(finding);
                  }
                });
}

/// A sub-folder whose name is mistyped would go unnoticed among others.
void Accounting::requireSubFolders(const std::vector<std::string>& subFolders,
                                   RunTotals& totals) const {
  for (const std::string& subFolder : subFolders) {
    if (!subFolder.empty() && m_subFolders.count(subFolder) == 0) {
      totals.uncompared.push_back("no master in the sub-folder " + subFolder);
    }
  }
}

std::string strictProblem(const std::vector<FindingTotal>& findings,
                          const std::set<FindingKind>& strict) {
  std::string keys;
  for (const FindingTotal& total : findings) {
    if (strict.count(total.kind) != 0) {
      keys += (keys.empty() ? "" : ", ") + std::string(keyOf(total.kind));
    }
  }
  return keys.empty() ? keys : "not accepted with --strict: " + keys;
}

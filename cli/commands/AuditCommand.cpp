#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/SelectionOptions.h"
#include "cli/commands/SubFolders.h"
#include "cli/commands/SuiteSettings.h"
#include "cli/commands/WorkFolder.h"
#include "cli/record/JsonText.h"
#include "cli/report/AccountPrinter.h"
#include "cli/report/ClosingSummary.h"
#include "cli/suite/MasterAudit.h"
#include "cli/suite/SuiteInventory.h"
#include "cli/system/OutputPlace.h"
#include "cli/terminal/Printable.h"

namespace {

struct AuditOptions : CommonOptions {
  std::vector<std::string> locations;
  FormatOptions formats;
  std::string workFolder;
  ConfigChoice config;
  std::string fixList;  ///< file to write; empty: none
  bool asJson = false;
};

/// What an audit found, in the order of kinds, then paths.
struct AuditResult {
  std::vector<Finding> findings;
  std::uint64_t reports = 0;
  std::uint64_t masters = 0;

  /// A normalisation without work is worth knowing, but nothing is wrong with the suite.
  std::uint64_t faults() const {
    return static_cast<std::uint64_t>(
        std::count_if(findings.begin(), findings.end(),
                      [](const Finding& finding) { return finding.kind != FindingKind::Pattern; }));
  }
};

AuditResult audit(AuditOptions& options) {
  std::vector<SelectedFormat> formats = selectFormats(options.formats);
  const FoundReports found = findReports(options.locations);
  if (addSubFolders(options.formats, formats, found)) {
    formats = selectFormats(options.formats);
  }
  const MasterRules rules(formats, options.formats);
  const SharedPictures pictures(formats, options.formats.names);
  InventoryScope scope;
  scope.isAsked.assign(found.reports.size(), true);
  scope.isWholeSuite = found.isWholeSuite;
  scope.isOfSomeFormats = !options.formats.names.empty();
  AuditResult result;
  const FindingSink sink = [&result](const Finding& finding) {
    result.findings.push_back(finding);
  };
  MasterAudit masters(found, sink);
  takeInventory({found, formats, rules, pictures, scope, nullptr, false,
                 [&masters](const MasterRule& rule, const std::string& master,
                            std::uint32_t report) { masters.visit(rule, master, report); }},
                sink);
  masters.finish(scope.isOfSomeFormats);
  std::sort(result.findings.begin(), result.findings.end(),
            [](const Finding& one, const Finding& other) {
              return std::tie(one.kind, one.path, one.detail) <
                     std::tie(other.kind, other.path, other.detail);
            });
  result.reports = found.reports.size();
  result.masters = masters.masters();
  return result;
}

nlohmann::ordered_json toJson(const Finding& finding) {
  nlohmann::ordered_json json = {{"kind", std::string(keyOf(finding.kind))},
                                 {"path", textToJson(finding.path)}};
  if (!finding.detail.empty()) {
    json["detail"] = textToJson(finding.detail);
  }
  return json;
}

/// What is to be done about a finding by a program that accepts outputs or removes files; empty for
/// one that a person has to look at.
std::string fixFor(FindingKind kind) {
  switch (kind) {
    case FindingKind::Output:
      return "accept";
    case FindingKind::Orphan:
    case FindingKind::Leftover:
      return "remove";
    default:
      return {};
  }
}

std::string fixList(const std::vector<Finding>& findings) {
  std::string lines;
  for (const Finding& finding : findings) {
    if (const std::string fix = fixFor(finding.kind); !fix.empty()) {
      nlohmann::ordered_json json = {{"fix", fix}};
      json.update(toJson(finding));
      lines += json.dump() + '\n';
    }
  }
  return lines;
}

/// A heading for each kind, with what to do, and under it every finding.
void printGroups(const std::vector<Finding>& findings) {
  for (auto first = findings.begin(); first != findings.end();) {
    const auto end = std::find_if(first, findings.end(), [first](const Finding& finding) {
      return finding.kind != first->kind;
    });
    FindingTally group;
    std::for_each(first, end, [&group](const Finding& finding) { group.add(finding); });
    std::cout << keyOf(first->kind) << ": " << printable(accountHeading(group.totals().front()))
              << '\n';
    for (; first != end; ++first) {
      std::cout << "    " << printable(first->path);
      if (!first->detail.empty()) {
        std::cout << "  (" << printable(first->detail) << ')';
      }
      std::cout << '\n';
    }
  }
}

ExitStatus run(const AuditOptions& given) {
  AuditOptions options = given;
  const auto config = suiteConfigFor(options.config, options.locations, options.verbosity);
  if (config) {
    takeSelection(*config, options, options.formats, options.workFolder);
  }
  enterWorkFolder(options.workFolder, options.locations,
                  {&options.fixList, &options.formats.layoutData.schema});
  if (config) {
    takeRules(*config, options.formats);
  }
  requireLocations(options.locations, options.startFolder);
  std::optional<OutputPlace> fixes;
  if (!options.fixList.empty()) {
    fixes.emplace("list of fixes", options.fixList);
    fixes->clear();
  }
  const AuditResult result = audit(options);
  if (options.asJson) {
    for (const Finding& finding : result.findings) {
      std::cout << toJson(finding).dump() << '\n';
    }
  } else if (options.verbosity != Verbosity::Quiet) {
    printGroups(result.findings);
  }
  if (fixes) {
    fixes->write(fixList(result.findings));
  }
  const std::uint64_t faults = result.faults();
  if (!options.asJson && result.reports > 0) {
    std::cout << (faults == 0 ? "Clean. " : countOf(faults, "finding") + ". ")
              << countOf(result.reports, "report") << ", " << countOf(result.masters, "master")
              << '\n';
  }
  const bool isTrouble =
      result.reports == 0 ||
      std::any_of(result.findings.begin(), result.findings.end(),
                  [](const Finding& finding) { return finding.kind == FindingKind::Unreadable; });
  if (result.reports == 0) {
    printProblems({"no reports at the locations"});
  }
  return isTrouble ? kExitTrouble : faults > 0 ? kExitNotPassed : kExitPassed;
}

}  // namespace

void addAudit(CLI::App& app, Performer& chosen) {
  const auto [verb, audit] = addVerb<AuditOptions>(
      app, chosen, "audit",
      "List what is wrong with a suite, without comparing anything: files that belong to nothing, "
      "masters that cannot be right",
      run);
  verb.add_option("LOCATION", audit.locations, "As for verify")->required()->option_text("...");
  addSelection(verb, audit.formats);
  verb.add_flag("--json", audit.asJson, "Print the findings as lines of JSON");
  verb.add_option("--fix-list", audit.fixList,
                  "Write to FILE which outputs to accept and which files to remove")
      ->check(notEmpty())
      ->type_name("FILE");
  addWork(verb, audit.workFolder);
  addConfig(verb, audit.config);
}

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/SelectionOptions.h"
#include "cli/commands/SuiteAudit.h"
#include "cli/commands/Verb.h"
#include "cli/commands/WorkFolder.h"
#include "cli/record/ContentHash.h"
#include "cli/record/Decision.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

using Kind = ChangeOutcome::Kind;

struct RemoveOptions : CommonOptions {
  ChangeOptions change;
  std::vector<std::string> locations;
  std::string workFolder;
  std::string list;  ///< file of decisions; empty: none
  bool takesOrphans = false;
};

/// Raises `CommandError` unless the audit has seen everything: what is not seen makes orphans.
void requireComplete(const AuditResult& audit) {
  for (const Finding& finding : audit.findings) {
    if (finding.kind == FindingKind::Unreadable) {
      throw CommandError("nothing is removed, as the suite cannot be read completely: " +
                         finding.path + ": " + finding.detail);
    }
  }
  if (audit.reports == 0) {
    throw CommandError("nothing is removed, as there are no reports at the locations");
  }
}

/// Whether a link leads to the folder "Masters" of this file, so that reports elsewhere may have
/// the same.
bool isReachedByLink(const std::string& master) {
  const std::string name = std::string("/") + kMasterFolder + '/';
  const std::size_t start = ('/' + master).rfind(name);  // one too far
  const fs::path folder = start == std::string::npos
                              ? fs::path(master).parent_path()
                              : fs::path(master.substr(0, start + name.size() - 2));
  std::error_code unknown;
  return fs::is_symlink(folder, unknown);
}

/// The masters to remove: all orphans, or those of the list.
std::vector<std::string> chosenOf(const RemoveOptions& options, const AuditResult& audit,
                                  ChangeReport& besides) {
  std::map<std::string, bool> orphans;  // whether it is chosen
  for (const Finding& finding : audit.findings) {
    if (finding.kind == FindingKind::Orphan) {
      orphans[finding.path] = options.takesOrphans;
    }
  }
  for (const Decision& decision :
       options.list.empty() ? std::vector<Decision>() : readDecisions(options.list)) {
    const auto orphan = orphans.find(decision.path);
    if (decision.fix != Decision::Fix::Remove) {
      continue;
    }
    if (orphan != orphans.end()) {
      orphan->second = true;
    } else {
      besides.outcomes.push_back(
          {Kind::Refused, decision.path, "the audit of this command names no such orphan"});
    }
  }
  std::vector<std::string> chosen;
  for (const auto& [path, isChosen] : orphans) {
    if (isChosen && isReachedByLink(path)) {
      besides.outcomes.push_back(
          {Kind::Refused, path, "its folder is a link; it may be a master of reports elsewhere"});
    } else if (isChosen) {
      chosen.push_back(path);
    }
  }
  return chosen;
}

void append(ChangeReport& report, const ChangeReport& more) {
  report.outcomes.insert(report.outcomes.end(), more.outcomes.begin(), more.outcomes.end());
}

ExitStatus run(const RemoveOptions& given) {
  if (!given.takesOrphans && given.list.empty()) {
    throw CommandError("say what to remove: --orphans, or --list FILE");
  }
  requireConsent(given.change);
  RemoveOptions options = given;
  makeAbsolutePlace(options.change);
  enterWorkFolder(options.workFolder, options.locations, {&options.list});
  requireLocations(options.locations, options.startFolder);
  FormatOptions formats;
  formats.allSubFolders = true;
  const AuditResult audit = SuiteAudit(options.locations, formats).take(false);
  requireComplete(audit);
  ChangeReport besides;
  std::vector<MasterChange> changes;
  for (const std::string& path : chosenOf(options, audit, besides)) {
    const auto content = hashFile(path);
    if (content) {
      changes.push_back({path, content->hash, {}, {}});
    } else {
      besides.outcomes.push_back({Kind::Failed, path, "it cannot be read, so it cannot be kept"});
    }
  }
  const JournalPlace place = placeOfJournal(options.locations, options.change.journal);
  Baselines baselines(place, options.change.keptEntries);
  const auto with = [&besides](ChangeReport report) {
    append(report, besides);
    return report;
  };
  const ContentSource none = [](const MasterChange& /*change*/) { return std::string(); };
  return carryOut(options.change, options, {"To remove", "remove", "Removed", "master"}, place,
                  with(baselines.check(changes, none)), [&] {
                    return with(baselines.apply({"remove", 0}, changes, none));
                  });
}

}  // namespace

void addRemove(CLI::App& app, Performer& chosen) {
  const auto [verb, remove] = addVerb<RemoveOptions>(
      app, chosen, "remove", "Remove masters that belong to no report; can be undone", run);
  verb.add_option("LOCATION", remove.locations, "As for verify")->required()->option_text("...");
  CLI::Option* const orphans =
      verb.add_flag("--orphans", remove.takesOrphans, "Remove all of them");
  verb.add_option("--list", remove.list,
                  "Remove those that FILE says to remove, as audit --fix-list writes it")
      ->excludes(orphans)
      ->check(notEmpty())
      ->type_name("FILE");
  addChangeOptions(verb, remove.change);
  addWork(verb, remove.workFolder);
}

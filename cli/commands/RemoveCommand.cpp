#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/SelectionOptions.h"
#include "cli/commands/SuiteAudit.h"
#include "cli/commands/SuiteSettings.h"
#include "cli/commands/Verb.h"
#include "cli/commands/WorkFolder.h"
#include "cli/record/ContentHash.h"
#include "cli/record/Decision.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

using Kind = ChangeOutcome::Kind;

struct RemoveOptions : CommonOptions {
  ChangeOptions change;
  std::vector<std::string> locations;
  std::string workFolder;
  ConfigChoice config;
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

/// Whether a link leads to the master folder of this file, so that reports elsewhere may have
/// the same.
bool isReachedByLink(const std::string& master) {
  const std::string name = '/' + suiteLayout().masterFolder + '/';
  const std::size_t start = ('/' + master).rfind(name);  // one too far
  const fs::path folder = start == std::string::npos
                              ? fs::path(master).parent_path()
                              : fs::path(master.substr(0, start + name.size() - 2));
  std::error_code unknown;
  return fs::is_symlink(folder, unknown);
}

/// What belongs to nothing: whether it is no master, and whether it is chosen.
struct Removable {
  bool isLeftover;
  bool isChosen;
};

/// The changes to make: all orphans, or what the list says; `left` receives what stays.
std::vector<MasterChange> chosenOf(const RemoveOptions& options, const AuditResult& audit,
                                   ChangeReport& left) {
  std::map<std::string, Removable> removables;
  for (const Finding& finding : audit.findings) {
    if (finding.kind == FindingKind::Orphan || finding.kind == FindingKind::Leftover) {
      const bool isLeftover = finding.kind == FindingKind::Leftover;
      removables[finding.path] = {isLeftover, options.takesOrphans && !isLeftover};
    }
  }
  for (const Decision& decision :
       options.list.empty() ? std::vector<Decision>() : readDecisions(options.list)) {
    const auto removable = removables.find(decision.path);
    if (decision.fix == Decision::Fix::Remove && removable != removables.end()) {
      removable->second.isChosen = true;
    } else if (decision.fix == Decision::Fix::Remove) {
      left.outcomes.push_back({Kind::Refused, decision.path,
                               "it belongs to something, says the audit of this command"});
    }
  }
  std::vector<MasterChange> changes;
  for (const auto& [path, removable] : removables) {
    if (!removable.isChosen) {
      continue;
    }
    const auto content = hashFile(path);
    if (!removable.isLeftover && isReachedByLink(path)) {
      left.outcomes.push_back(
          {Kind::Refused, path, "its folder is a link; it may be a master of reports elsewhere"});
    } else if (!content) {
      left.outcomes.push_back({Kind::Failed, path, "it cannot be read, so it cannot be kept"});
    } else {
      changes.push_back({path, content->hash, {}, {}, {}, removable.isLeftover});
    }
  }
  return changes;
}

ExitStatus run(const RemoveOptions& given) {
  if (!given.takesOrphans && given.list.empty()) {
    throw CommandError("say what to remove: --orphans, or --list FILE");
  }
  requireConsent(given.change);
  RemoveOptions options = given;
  makeAbsolutePlace(options.change);
  FormatOptions formats;
  const auto config = suiteConfigFor(options.config, options.locations, options.verbosity);
  if (config) {
    takeSelection(*config, options, formats, options.workFolder);
  }
  enterWorkFolder(options.workFolder, options.locations, {&options.list});
  if (config) {
    takeRules(*config, formats);
  }
  formats.names.clear();  // what only some formats know, others would call an orphan
  formats.allSubFolders = true;
  requireLocations(options.locations, options.startFolder);
  const AuditResult audit = SuiteAudit(options.locations, formats).take(false);
  requireComplete(audit);
  ChangeReport left;
  const std::vector<MasterChange> changes = chosenOf(options, audit, left);
  const JournalPlace place = placeOfJournal(options.locations, options.change.journal);
  Baselines baselines(place, options.change.keptEntries);
  const ContentSource none = [](const MasterChange& /*change*/) { return std::string(); };
  return carryOut(
      options.change, options, {"To remove", "remove", "Removed", "file"}, place,
      [&] { return joined(baselines.check(changes, none), left); },
      [&] {
        return joined(baselines.apply({"remove", 0}, changes, none), left);
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
  addConfig(verb, remove.config);
}

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/baseline/Acceptance.h"
#include "cli/baseline/NewMasters.h"
#include "cli/baseline/SafeFiles.h"
#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/PairChoice.h"
#include "cli/commands/SuiteAudit.h"
#include "cli/commands/Verb.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/commands/WorkFolder.h"
#include "cli/record/ContentHash.h"
#include "cli/record/RecordReader.h"
#include "cli/suite/FolderReader.h"
#include "cli/suite/NewerThan.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace fs = std::filesystem;

namespace {

using Kind = ChangeOutcome::Kind;

constexpr ChangeWording kWording = {"To accept", "accept", "Accepted", "output"};

struct AcceptOptions : VerifyOptions {
  ChangeOptions change;
  std::string record;  ///< folder of the record to take verdicts from; empty: verify
  std::string list;    ///< file of decisions; empty: none
  std::vector<std::string> groups;
  bool takesNew = false;
};

/// What to do to masters that no pair tells of, and what is to be said besides.
struct NewChanges {
  std::vector<MasterChange> changes;
  std::map<std::string, std::string> formats;  ///< by output
  std::vector<ChangeOutcome> left;
};

bool isVerifyAsked(const VerifyOptions& options) {
  return !options.failedRecord.empty() || !options.shard.empty() || !options.recordFolder.empty() ||
         !options.summaryFile.empty() || !options.harnessLog.empty() || !options.reports.empty() ||
         !options.newerThan.empty() || !options.strict.empty() || !options.workFolder.empty() ||
         options.saveNormalized;
}

void requireSensible(const AcceptOptions& options) {
  const bool isRecorded = !options.record.empty();
  if (isRecorded && isVerifyAsked(options)) {
    throw CommandError(
        "--from takes the verdicts of a recorded run, and verifies nothing; leave out the options "
        "of verify");
  }
  if (options.takesNew && (isRecorded || !options.list.empty() || !options.groups.empty())) {
    throw CommandError(
        "--new accepts outputs without a master only; give it no --from, --list or --group");
  }
  if (!isRecorded && options.locations.empty() && options.failedRecord.empty()) {
    throw CommandError(
        "accept needs a location (a report's own file, or a folder of reports), or --from RECORD");
  }
  requireConsent(options.change);
}

std::vector<std::string> realLocations(const std::vector<std::string>& locations) {
  std::vector<std::string> real;
  for (const std::string& location : locations) {
    std::error_code error;
    real.push_back(fs::canonical(location, error).string());
    if (error) {
      throw CommandError(location + ": " + error.message());
    }
  }
  return real;
}

/// Finds out where the outputs of a finding or a list belong.
NewChanges planNew(const std::vector<std::string>& outputs, const SuiteAudit& suite,
                   const std::optional<NewerThan>& newerThan) {
  const NewMasters masters(suite.found(), suite.rules());
  NewChanges plan;
  for (const std::string& output : outputs) {
    const NewMaster master = masters.masterFor(output);
    const auto stale = newerThan ? whyStale(output, *newerThan) : std::nullopt;
    const auto content = hashFile(output);
    const std::string why = !master.why.empty() ? master.why
                            : stale             ? "it is stale: " + *stale
                            : !content          ? "it cannot be read"
                                                : "";
    if (!why.empty()) {
      plan.left.push_back({Kind::Refused, output, why});
      continue;
    }
    plan.changes.push_back({master.master, {}, content->hash, output});
    plan.formats[output] = master.format;
  }
  return plan;
}

/// Reads outputs that have no master yet.
ContentSource sourceOf(const NewChanges& plan) {
  return [&plan](const MasterChange& change) {
    std::error_code error;
    std::string bytes = readWhole(change.source, error);
    if (error) {
      throw CommandError(change.source + ": " + error.message());
    }
    if (const auto why =
            whyNotAMaster(change.source, bytes, change.master, plan.formats.at(change.source))) {
      throw CommandError(*why);
    }
    return bytes;
  };
}

void append(ChangeReport& report, const ChangeReport& more) {
  report.outcomes.insert(report.outcomes.end(), more.outcomes.begin(), more.outcomes.end());
  report.problems.insert(report.problems.end(), more.problems.begin(), more.problems.end());
  report.entry = std::max(report.entry, more.entry);
}

ExitStatus acceptNew(const AcceptOptions& given) {
  AcceptOptions options = given;
  const auto newerThan =
      options.newerThan.empty() ? std::nullopt : std::optional(parseNewerThan(options.newerThan));
  makeAbsolutePlace(options.change);
  enterWorkFolder(options.workFolder, options.locations, {&options.formats.layoutData.schema});
  requireLocations(options.locations, options.startFolder);
  const JournalPlace place = placeOfJournal(options.locations, options.change.journal);
  const SuiteAudit suite(options.locations, options.formats);
  const AuditResult audit = suite.take(false);
  std::vector<std::string> outputs;
  ChangeReport unread;
  for (const Finding& finding : audit.findings) {
    if (finding.kind == FindingKind::Output) {
      outputs.push_back(finding.path);
    } else if (finding.kind == FindingKind::Unreadable) {
      unread.problems.push_back("the folder " + finding.path +
                                " cannot be read: " + finding.detail);
    }
  }
  const NewChanges plan = planNew(outputs, suite, newerThan);
  unread.outcomes = plan.left;
  const ContentSource source = sourceOf(plan);
  Baselines baselines(place, options.change.keptEntries);
  const auto with = [&unread](ChangeReport report) {
    append(report, unread);
    return report;
  };
  return carryOut(options.change, options,
                  {"To store as new masters", "store", "Stored", "new master"}, place,
                  with(baselines.check(plan.changes, source)), [&] {
                    return with(baselines.apply({"accept", 0}, plan.changes, source));
                  });
}

/// Where the pairs of a run come from, and what the run as a whole came to.
struct Pairs {
  std::set<std::string> reportFolders;
  ExitStatus status = kExitPassed;
};

std::string folderOf(const std::string& report) {
  const std::size_t slash = report.rfind('/');
  return slash == std::string::npos ? "." : report.substr(0, slash + 1);
}

Pairs readRecord(RecordReader& record, PairChoice& choice) {
  Pairs pairs;
  if (!record.run().complete) {
    std::cerr << "orvdiff: the run of " << printable(record.folder())
              << " did not come to its end; what it did not compare is not accepted\n";
  }
  while (const auto pair = record.next()) {
    choice.add(*pair, true);
    pairs.reportFolders.insert(folderOf(pair->report));
  }
  return pairs;
}

Pairs verify(const AcceptOptions& options, PairChoice& choice) {
  Pairs pairs;
  VerifyOptions verification = options;
  verification.pairListener = [&](const PairResult& pair) {
    choice.add(pair.record, pair.countsForReport);
    pairs.reportFolders.insert(folderOf(pair.record.report));
  };
  pairs.status = run(verification);
  return pairs;
}

/// What belongs to the choice, but to no pair that may be accepted.
std::vector<ChangeOutcome> leftOf(const PairChoice& choice, const ChoiceRules& rules) {
  std::vector<ChangeOutcome> left = choice.left();
  for (const Decision* const decision : choice.unusedDecisions()) {
    left.push_back({Kind::Refused, decision->path, "no pair of the run has this master"});
  }
  for (const Decision& decision : rules.decisions) {
    if (decision.fix == Decision::Fix::Accept && decision.kind == keyOf(FindingKind::Output)) {
      left.push_back(
          {Kind::Refused, decision.path, "it has no master; orvdiff accept --new stores one"});
    }
  }
  return left;
}

/// Enters the working folder of the recorded run, from which its paths lead to the files.
void enterFolderOf(const RecordReader& record, AcceptOptions& options) {
  if (folderId(record.run().workingFolder) == FolderId{}) {
    throw CommandError("the run of " + record.folder() + " worked in the folder " +
                       record.run().workingFolder + ", which is not there any more");
  }
  enterWorkFolder(record.run().workingFolder, options.locations, {});
}

ExitStatus accept(AcceptOptions& options) {
  ChoiceRules rules;
  rules.groups = options.groups;
  rules.hasList = !options.list.empty();
  if (rules.hasList) {
    rules.decisions = readDecisions(options.list);
  }
  std::optional<RecordReader> record;
  if (!options.record.empty()) {
    makeAbsolute(options.record);
    record.emplace(options.record);
    rules.formats = options.formats.names;
    rules.locations = realLocations(options.locations);
    enterFolderOf(*record, options);
  }
  PairChoice choice(rules);
  const Pairs pairs = record ? readRecord(*record, choice) : verify(options, choice);
  if (pairs.status > kExitTrouble) {
    return pairs.status;  // interrupted
  }
  for (const std::string& group : choice.unknownGroups()) {
    throw CommandError("no pair has a change of group " + group);
  }
  ChangeReport besides;
  besides.outcomes = leftOf(choice, rules);
  const auto chosen = choice.pairs();
  if (chosen.empty() && besides.outcomes.empty()) {
    std::cout << "Nothing to accept.\n";
    return pairs.status == kExitTrouble ? kExitTrouble : kExitPassed;
  }
  const JournalPlace place = placeOfJournal(
      {pairs.reportFolders.begin(), pairs.reportFolders.end()}, options.change.journal);
  Baselines baselines(place, options.change.keptEntries);
  Acceptance acceptance(baselines, record ? &*record : nullptr, &choice.uses());
  const auto with = [&besides](ChangeReport report) {
    append(report, besides);
    return report;
  };
  const ExitStatus status =
      carryOut(options.change, options, kWording, place, with(acceptance.check(chosen)),
               [&] { return with(acceptance.accept(chosen)); });
  return pairs.status == kExitTrouble ? kExitTrouble : status;
}

ExitStatus run(const AcceptOptions& given) {
  requireSensible(given);
  if (given.takesNew) {
    return acceptNew(given);
  }
  AcceptOptions options = given;
  makeAbsolutePlace(options.change);
  makeAbsolute(options.list);
  return accept(options);
}

}  // namespace

void addAccept(CLI::App& app, Performer& chosen) {
  const auto [verb, accept] = addVerb<AcceptOptions>(
      app, chosen, "accept",
      "Verify, and make the outputs of pairs that differ their masters; can be undone", run);
  verb.alias("approve");
  verb.add_option("LOCATION", accept.locations,
                  "As for verify; with --from, only pairs of these reports or folders")
      ->option_text("...");
  verb.add_option("--from", accept.record,
                  "Do not verify: take the verdicts of the record DIR, and outputs that have "
                  "changed since from its evidence")
      ->check(notEmpty())
      ->type_name("DIR");
  verb.add_option("--group", accept.groups,
                  "Only pairs whose every change belongs to the group ID; may be repeated")
      ->allow_extra_args(false)
      ->check(notEmpty())
      ->option_text("ID");
  verb.add_option("--list", accept.list,
                  "Only pairs that FILE says to accept: decisions of review or of the HTML report")
      ->check(notEmpty())
      ->type_name("FILE");
  verb.add_flag("--new", accept.takesNew,
                "Do not verify: store outputs that have no master as new ones");
  addChangeOptions(verb, accept.change);
  addVerifyOptions(verb, accept);
}

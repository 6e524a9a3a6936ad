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
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/PairChoice.h"
#include "cli/commands/SuiteAudit.h"
#include "cli/commands/SuiteSettings.h"
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
  std::optional<NewerThan> limit;  ///< what `newerThan` means
};

/// Outputs that are to become new masters, and those that cannot.
struct NewChoice {
  std::vector<NewOutput> outputs;
  ChangeReport left;
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

/// Finds out which masters the outputs would be.
NewChoice planNew(const std::vector<std::string>& outputs, const SuiteAudit& suite,
                  const std::optional<NewerThan>& limit) {
  const NewMasters masters(suite.found(), suite.rules());
  NewChoice choice;
  for (const std::string& output : outputs) {
    const NewMaster master = masters.masterFor(output);
    const auto stale = limit ? whyStale(output, *limit) : std::nullopt;
    const auto content = hashFile(output);
    const std::string why = !master.why.empty() ? master.why
                            : stale             ? "it is stale: " + *stale
                            : !content          ? "it cannot be read"
                                                : "";
    if (why.empty()) {
      choice.outputs.push_back({output, master.master, master.format, content->hash});
    } else {
      choice.left.outcomes.push_back({Kind::Refused, output, why});
    }
  }
  return choice;
}

/// Takes over what the suite's file says; what the command line says counts first.
void takeConfig(AcceptOptions& options) {
  takeConfig(options, Verbosity::Normal);
  if (!options.limit && !options.newerThan.empty()) {
    options.limit = parseNewerThan(options.newerThan);
  }
}

/// Of the suite's file.
void takeRules(AcceptOptions& options) {
  if (options.suite != nullptr) {
    takeRules(*options.suite, options.formats);
  }
}

ExitStatus acceptNew(AcceptOptions& options) {
  takeConfig(options);
  enterWorkFolder(options.workFolder, options.locations, {&options.formats.layoutData.schema});
  takeRules(options);
  requireLocations(options.locations, options.startFolder);
  const JournalPlace place = placeOfJournal(options.locations, options.change.journal);
  const SuiteAudit suite(options.locations, options.formats);
  std::vector<std::string> outputs;
  std::vector<std::string> unread;
  for (const Finding& finding : suite.take(false).findings) {
    if (finding.kind == FindingKind::Output) {
      outputs.push_back(finding.path);
    } else if (finding.kind == FindingKind::Unreadable) {
      unread.push_back("the folder " + finding.path + " cannot be read: " + finding.detail);
    }
  }
  NewChoice choice = planNew(outputs, suite, options.limit);
  choice.left.problems = unread;
  Baselines baselines(place, options.change.keptEntries);
  Acceptance acceptance(baselines, nullptr);
  return carryOut(
      options.change, options, {"To store as new masters", "store", "Stored", "new master"}, place,
      [&] { return joined(acceptance.check({}, choice.outputs), choice.left); },
      [&] { return joined(acceptance.accept({}, choice.outputs), choice.left); });
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

/// Verifies, which enters the working folder, and keeps the locations right for that.
Pairs verify(AcceptOptions& options, PairChoice& choice) {
  Pairs pairs;
  VerifyOptions verification = options;
  takeConfig(options);
  for (std::string& location : options.locations) {
    makeAbsolute(location);
  }
  verification.pairListener = [&](const PairResult& pair) {
    choice.add(pair.record, pair.countsForReport);
    pairs.reportFolders.insert(folderOf(pair.record.report));
  };
  pairs.status = run(verification);
  takeRules(options);
  for (std::string& location : options.locations) {
    location = shortPath(location);
  }
  return pairs;
}

/// What belongs to the choice, but to no pair that may be accepted.
std::vector<ChangeOutcome> leftOf(const PairChoice& choice) {
  std::vector<ChangeOutcome> left = choice.left();
  for (const Decision* const decision : choice.unusedDecisions()) {
    left.push_back({Kind::Refused, decision->path, "no pair of the run has this master"});
  }
  return left;
}

/// The outputs without a master that the list accepts. Their masters can only be told from all
/// reports of the suite, not from the pairs of a run.
NewChoice newOf(const ChoiceRules& rules, AcceptOptions& options) {
  std::vector<std::string> outputs;
  for (const Decision& decision : rules.decisions) {
    if (decision.fix == Decision::Fix::Accept && decision.kind == keyOf(FindingKind::Output)) {
      outputs.push_back(decision.path);
    }
  }
  if (!outputs.empty() && !options.locations.empty()) {
    return planNew(outputs, SuiteAudit(options.locations, options.formats), options.limit);
  }
  NewChoice choice;
  for (const std::string& output : outputs) {
    choice.left.outcomes.push_back(
        {Kind::Refused, output, "it has no master; name the suite as a location to store one"});
  }
  return choice;
}

ChoiceRules rulesOf(const AcceptOptions& options) {
  ChoiceRules rules;
  rules.groups = options.groups;
  rules.hasList = !options.list.empty();
  if (rules.hasList) {
    rules.decisions = readDecisions(options.list);
  }
  if (!options.record.empty()) {  // a verification heeds these itself
    rules.formats = options.formats.names;
    rules.locations = realLocations(options.locations);
  }
  return rules;
}

/// Enters the working folder of the recorded run, from which its paths lead to the files, and takes
/// over its formats and the rules of its suite's file.
void takeUp(const RecordReader& record, AcceptOptions& options) {
  if (folderId(record.run().workingFolder) == FolderId{}) {
    throw CommandError("the run of " + record.folder() + " worked in the folder " +
                       record.run().workingFolder + ", which is not there any more");
  }
  enterWorkFolder(record.run().workingFolder, options.locations, {&options.config.file});
  options.config = configOfRun(options.config, record.run().config);
  const std::vector<std::string> names = options.formats.names;
  options.formats = record.run().formats;
  options.formats.names = names.empty() ? options.formats.names : names;
  if (const auto config = suiteConfigFor(options.config, {}, Verbosity::Normal)) {
    takeRules(*config, options.formats);
  }
  for (const std::string& name : names) {
    formatNamed(name);
  }
}

/// The place for the journal of a run's pairs: all of them, so that it does not depend on a choice.
JournalPlace placeFor(const Pairs& pairs, const AcceptOptions& options) {
  std::vector<std::string> folders(pairs.reportFolders.begin(), pairs.reportFolders.end());
  if (folders.empty()) {
    folders = options.locations.empty() ? std::vector<std::string>{"."} : options.locations;
  }
  return placeOfJournal(folders, options.change.journal);
}

ExitStatus accept(AcceptOptions& options) {
  const ChoiceRules rules = rulesOf(options);
  std::optional<RecordReader> record;
  if (!options.record.empty()) {
    makeAbsolute(options.record);
    takeUp(record.emplace(options.record), options);
  }
  PairChoice choice(rules);
  const Pairs pairs = record ? readRecord(*record, choice) : verify(options, choice);
  if (pairs.status > kExitTrouble) {
    return pairs.status;  // interrupted
  }
  for (const std::string& group : choice.unknownGroups()) {
    throw CommandError("no pair has a change of group " + group);
  }
  NewChoice added = newOf(rules, options);
  ChangeReport& left = added.left;
  const auto others = leftOf(choice);
  left.outcomes.insert(left.outcomes.end(), others.begin(), others.end());
  const Acceptance::Pairs chosen = choice.pairs();
  if (chosen.empty() && added.outputs.empty() && left.outcomes.empty()) {
    std::cout << "Nothing to accept.\n";
    return pairs.status == kExitTrouble ? kExitTrouble : kExitPassed;
  }
  const JournalPlace place = placeFor(pairs, options);
  Baselines baselines(place, options.change.keptEntries);
  Acceptance acceptance(baselines, record ? &*record : nullptr, &choice.uses());
  const ExitStatus status = carryOut(
      options.change, options, kWording, place,
      [&] { return joined(acceptance.check(chosen, added.outputs), left); },
      [&] { return joined(acceptance.accept(chosen, added.outputs), left); });
  return pairs.status == kExitTrouble ? kExitTrouble : status;
}

ExitStatus run(const AcceptOptions& given) {
  requireSensible(given);
  AcceptOptions options = given;
  makeAbsolutePlace(options.change);
  makeAbsolute(options.list);
  if (!options.newerThan.empty()) {
    options.limit = parseNewerThan(options.newerThan);  // it may be a file of the user's folder
  }
  return options.takesNew ? acceptNew(options) : accept(options);
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

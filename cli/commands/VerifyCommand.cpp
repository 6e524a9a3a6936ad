#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/commands/Accounting.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/FailedRun.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/OutputPlaces.h"
#include "cli/commands/PairListing.h"
#include "cli/commands/RunHeader.h"
#include "cli/commands/RunOutputs.h"
#include "cli/commands/RunPlan.h"
#include "cli/commands/SubFolders.h"
#include "cli/commands/SuiteRun.h"
#include "cli/commands/SuiteSettings.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/commands/WorkFolder.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/Cores.h"
#include "cli/system/TimeStamp.h"
#include "cli/terminal/Printable.h"

namespace {

void printHint(const RunTotals& totals) {
  std::error_code ignored;
  if (totals.pairs.of(Verdict::Missing) > 0 &&
      !std::filesystem::is_directory(suiteLayout().outputRoot, ignored)) {
    std::cerr << "orvdiff: folder " << suiteLayout().outputRoot
              << " not found; use -C or --work to set the working folder\n";
  }
}

std::optional<NewerThan> newerThanOf(const VerifyOptions& options) {
  return options.newerThan.empty() ? std::nullopt
                                   : std::optional(parseNewerThan(options.newerThan));
}

PoolLimits limitsOf(const VerifyOptions& options) {
  constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
  return {options.jobs != 0 ? options.jobs : availableCores(), options.secondsPerPair,
          options.memoryMegabytes * kMegabyte};
}

/// What workers find out of each difference: more than is printed, for the record's readers.
std::optional<DiffOptions> differencesFor(const VerifyOptions& options) {
  constexpr std::size_t kLeastRecorded = 20;
  constexpr std::size_t kMostBytes = std::size_t{64} * 1024;
  const bool hasKnown = options.suite != nullptr && !options.suite->known.empty();
  if (options.verbosity == Verbosity::Quiet && options.recordFolder.empty() &&
      options.reports.empty() && !hasKnown && !options.pairListener) {
    return std::nullopt;
  }
  const std::size_t asked = options.differences.maxHunks;
  return DiffOptions{asked == 0 ? 0 : std::max(asked, kLeastRecorded), asked == 0 ? 0 : kMostBytes,
                     options.differences.context};
}

/// Finds the reports, and the sub-folders that `formats` are to be looked for in.
RunPlan findWork(VerifyOptions& options, std::vector<SelectedFormat>& formats) {
  requireLocations(options.locations, options.startFolder);
  RunPlan plan = planRun(options);
  if (addSubFolders(options.formats, formats, plan.found)) {
    formats = selectFormats(options.formats);
  }
  if (!plan.announcement.empty() && options.verbosity != Verbosity::Quiet) {
    std::cout << plan.announcement << '\n';
  }
  return plan;
}

PairVerifier::Settings settingsOf(const VerifyOptions& options, const RunPlan& plan,
                                  const SharedPictures* pictures,
                                  const std::optional<NewerThan>& newerThan) {
  PairVerifier::Settings settings;
  settings.verbosity = options.verbosity;
  settings.namesRules =
      options.verbosity == Verbosity::Verbose || !options.formats.patterns.empty();
  settings.maskLimits = options.maskLimits;
  settings.keepFacts = !options.recordFolder.empty() || options.pairListener;
  settings.keepTexts = options.saveNormalized || !options.harnessLog.empty();
  settings.differences = differencesFor(options);
  settings.onlyPairs = plan.wanted();
  settings.pictures = pictures;
  settings.newerThan = newerThan;
  return settings;
}

/// A pair of a record must not get lost: it would seem to pass now.
void addUncompared(const RunPlan& plan, RunTotals& totals) {
  std::vector<std::string>& uncompared = totals.uncompared;
  uncompared.insert(uncompared.end(), plan.uncompared.begin(), plan.uncompared.end());
  if (totals.pairs.pairs() < plan.onlyCount) {
    uncompared.push_back(std::to_string(plan.onlyCount - totals.pairs.pairs()) + " of " +
                         countOf(plan.onlyCount, "pair") +
                         " that did not pass before could not be found again");
  }
}

/// What went wrong besides the pairs.
std::vector<std::string> problemsOf(const VerifyOptions& options, const RunPlan& plan,
                                    const RunTotals& totals, const std::set<FindingKind>& strict) {
  // A share may well be empty; whether the whole is, merging will show.
  const bool mayBeEmpty = options.allowNone || plan.isDone() || !options.shard.empty();
  std::vector<std::string> problems = findProblems(totals, mayBeEmpty);
  if (const std::string strictly = strictProblem(totals.findings, strict); !strictly.empty()) {
    problems.push_back(strictly);
  }
  return problems;
}

KnownDifferences knownOf(const VerifyOptions& options) {
  return options.suite != nullptr
             ? KnownDifferences(options.suite->known, options.suite->folder, localDate())
             : KnownDifferences({}, {}, {});
}

std::set<std::string> namesOf(const std::vector<OwnPattern>& patterns) {
  std::set<std::string> names;
  for (const OwnPattern& pattern : patterns) {
    names.insert(pattern.name);
  }
  return names;
}

/// Whether every pair of the suite was to be compared, by this run or by those of other shards.
bool isOfWholeSuite(const VerifyOptions& options, const RunPlan& plan) {
  const bool isSelection =
      options.given.count("--format") + options.given.count("--sub-folder") > 0;
  return !plan.onlyPairs && plan.found.isWholeSuite && !isSelection;
}

void addKnown(const KnownDifferences& known, const VerifyOptions& options, const RunPlan& plan,
              RunTotals& totals) {
  const bool isWhole = isOfWholeSuite(options, plan);
  totals.remarks = known.remarks(isWhole && options.shard.empty());
  if (isWhole && !options.shard.empty()) {
    totals.known = known.uses();
  }
}

/// The run has worked by the file as it was; whoever changes it meanwhile may think otherwise.
void addConfigChange(const VerifyOptions& options, RunTotals& totals) {
  if (options.suite != nullptr && isChanged(*options.suite)) {
    totals.remarks.push_back(options.suite->path +
                             " has changed during the run, which used it as it was at the start");
  }
}

ExitStatus verify(VerifyOptions& options, const std::optional<NewerThan>& newerThan) {
  const auto start = std::chrono::steady_clock::now();
  const std::set<FindingKind> strict = Accounting::strictKinds(options.strict);
  std::vector<SelectedFormat> formats = selectFormats(options.formats);
  OutputPlaces places(options);
  const RunPlan plan = findWork(options, formats);
  const SharedPictures pictures(formats, options.formats.names);
  // What did not pass before is verified whatever has become of its folder.
  const SharedPictures* const leftPictures = plan.onlyPairs ? nullptr : &pictures;
  if (options.listOnly) {
    return listPairs(plan, formats, leftPictures, options.allowNone || plan.isDone());
  }
  places.requireFree(options, plan.found, formats);
  RunOutputs outputs(options, places, startedRun(options, plan));
  const Palette palette(options.color);
  GroupPrinter printer(options.groupsChanges, options.verbosity, palette,
                       viewOf(options.differences));
  const PairOwners owners(plan.found.reports, plan.found.neighbours);
  PairVerifier verifier(plan.reports, formats, owners,
                        settingsOf(options, plan, leftPictures, newerThan));
  Accounting accounting;
  KnownDifferences known = knownOf(options);
  RunLogs logs = outputs.logs(accounting);
  logs.known = known.isEmpty() ? nullptr : &known;
  logs.listener = options.pairListener;
  SuiteRun suiteRun(plan.reports, verifier, printer, logs);
  suiteRun.totals().pairs.setSuitePatterns(namesOf(options.formats.patterns));
  suiteRun.verify(limitsOf(options), options.verbosity != Verbosity::Quiet && canShowProgress());
  printer.finish();
  RunTotals& totals = suiteRun.totals();
  totals.emptyLocations = plan.found.emptyLocations;
  totals.unsaved = outputs.unsavedFiles();
  if (!totals.interrupted) {
    addUncompared(plan, totals);
    accounting.close(options, plan, formats, pictures, totals);
    addKnown(known, options, plan, totals);
  }
  addConfigChange(options, totals);
  totals.time = std::chrono::steady_clock::now() - start;
  std::vector<std::string> problems = problemsOf(options, plan, totals, strict);
  outputs.finish(suiteRun, problems);
  printClosingSummary(totals, problems, options.verbosity, palette);
  printHint(totals);
  return exitStatusOf(totals, problems);
}

VerifyOptions completeOptions(const VerifyOptions& given) {
  VerifyOptions options = given.failedRecord.empty() ? given : optionsForFailed(given);
  takeConfig(options, options.verbosity);
  return options;
}

}  // namespace

ExitStatus run(const VerifyOptions& given) {
  std::optional<NewerThan> newerThan = newerThanOf(given);  // a file of the user's folder
  VerifyOptions options = completeOptions(given);
  if (!newerThan) {
    newerThan = newerThanOf(options);
  }
  std::vector<std::string*> files = {&options.summaryFile, &options.harnessLog,
                                     &options.recordFolder, &options.formats.layoutData.schema};
  for (ReportRequest& request : options.reports) {
    files.push_back(&request.file);
  }
  enterWorkFolder(options.workFolder, options.locations, files);
  if (options.suite != nullptr) {
    takeRules(*options.suite, options.formats);
  }
  return verify(options, newerThan);
}

#include <algorithm>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/Accounting.h"
#include "cli/commands/FailedRun.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/OutputPlaces.h"
#include "cli/commands/PairListing.h"
#include "cli/commands/RunHeader.h"
#include "cli/commands/RunPlan.h"
#include "cli/commands/SubFolders.h"
#include "cli/commands/SuiteRun.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/commands/WorkFolder.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/Cores.h"
#include "cli/terminal/ErrorCause.h"

namespace {

void printHint(const RunTotals& totals) {
  std::error_code ignored;
  if (totals.pairs.of(Verdict::Missing) > 0 &&
      !std::filesystem::is_directory(kOutputRoot, ignored)) {
    std::cerr << "orvdiff: folder " << kOutputRoot
              << " not found; use -C or --work to set the working folder\n";
  }
}

/// Calls `finish`, whose error becomes one of the `problems`.
void finishOrSayWhy(const std::function<void()>& finish, std::vector<std::string>& problems) {
  try {
    finish();
  } catch (const std::exception& unwritten) {
    problems.push_back(causeOf(unwritten, Verbosity::Normal));
  }
}

/// Finishes what a run has written, so that the closing line knows whether all of it is there.
void finishFiles(std::optional<SummaryFile>& summary, std::optional<HarnessLog>& harnessLog,
                 const SuiteRun& run, bool interrupted, std::vector<std::string>& problems) {
  if (summary && run.isSummaryWhole()) {
    finishOrSayWhy([&] { interrupted ? summary->leaveUnfinished() : summary->finish(); }, problems);
  }
  if (harnessLog) {
    const auto told = interrupted ? std::vector<std::string>{"interrupted"} : problems;
    finishOrSayWhy([&] { harnessLog->finish(told); }, problems);
  }
}

/// What a record and reports say of a run at its end. One that was stopped stays incomplete.
RunRecord endedRun(RunRecord run, const RunTotals& totals,
                   const std::vector<std::string>& problems) {
  run.end = timeStamp();
  run.unverified = totals.unverified;
  run.findings = totals.findings;
  run.notes = problems;
  run.status = exitStatusOf(totals, problems);
  run.complete = !totals.interrupted && totals.incomplete.empty();
  return run;
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
  constexpr std::size_t kMostBytes = 64 * 1024;
  if (options.verbosity == Verbosity::Quiet && options.recordFolder.empty() &&
      options.reports.empty()) {
    return std::nullopt;
  }
  const std::size_t asked = options.differences.maxHunks;
  return DiffOptions{asked == 0 ? 0 : std::max(asked, kLeastRecorded), asked == 0 ? 0 : kMostBytes,
                     options.differences.context};
}

ExitStatus verify(VerifyOptions& options, const std::optional<NewerThan>& newerThan) {
  const std::set<FindingKind> strict = Accounting::strictKinds(options.strict);
  std::vector<SelectedFormat> formats = selectFormats(options.formats);
  OutputPlaces places(options);
  requireLocations(options.locations, options.startFolder);
  const RunPlan plan = planRun(options);
  if (addSubFolders(options.formats, formats, plan.found)) {
    formats = selectFormats(options.formats);
  }
  const SharedPictures pictures(formats, options.formats.names);
  if (!plan.announcement.empty() && options.verbosity != Verbosity::Quiet) {
    std::cout << plan.announcement << '\n';
  }
  if (options.listOnly) {
    return listPairs(plan.reports, plan.found, formats, pictures, options.allowNone);
  }
  places.requireFree(options, plan.found, formats);
  std::optional<HarnessLog> harnessLog;
  if (places.harnessLog) {
    harnessLog.emplace(*places.harnessLog, options.harnessLogLevel);
  }
  std::optional<SummaryFile> summary;
  if (!options.summaryFile.empty()) {
    summary.emplace(places.summary ? &*places.summary : nullptr);
  }
  places.reports->clear();
  std::optional<RecordWriter> record;
  const RunRecord header = startedRun(options, plan);
  if (!options.recordFolder.empty()) {
    record.emplace(options.recordFolder, header, EvidenceLimits{});
  }
  const Palette palette(options.color);
  const ResultPrinter printer(options.verbosity, palette, viewOf(options.differences));
  NormalizedSaver saver;
  const PairOwners owners(plan.found.reports, plan.found.neighbours);
  PairVerifier verifier(
      plan.reports, formats, owners,
      {options.verbosity, options.maskLimits, record.has_value(), differencesFor(options),
       plan.onlyPairs ? &*plan.onlyPairs : nullptr, &pictures, newerThan});
  Accounting accounting;
  if (harnessLog) {
    harnessLog->start();
  }
  SuiteRun suiteRun(plan.reports, verifier, printer,
                    {summary ? &*summary : nullptr, options.saveNormalized ? &saver : nullptr,
                     harnessLog ? &*harnessLog : nullptr, record ? &*record : nullptr, &accounting,
                     places.reports->isEmpty() ? nullptr : &*places.reports});
  suiteRun.verify(limitsOf(options), options.verbosity != Verbosity::Quiet && canShowProgress());
  RunTotals& totals = suiteRun.totals();
  totals.emptyLocations = plan.found.emptyLocations;
  totals.unsaved = saver.unsavedFiles();
  if (!totals.interrupted) {
    accounting.close(options, plan, formats, pictures, totals);
  }
  // A share may well be empty; whether the whole is, merging will show.
  const bool mayBeEmpty = options.allowNone || plan.onlyPairs || !options.shard.empty();
  std::vector<std::string> problems = findProblems(totals, mayBeEmpty);
  if (const std::string strictly = strictProblem(totals.findings, strict); !strictly.empty()) {
    problems.push_back(strictly);
  }
  finishFiles(summary, harnessLog, suiteRun, totals.interrupted, problems);
  const RunRecord ended = endedRun(header, totals, problems);
  if (record) {
    finishOrSayWhy([&] { record->finish(ended); }, problems);
  }
  const std::vector<std::string> unwritten = places.reports->finish(ended);
  problems.insert(problems.end(), unwritten.begin(), unwritten.end());
  printClosingSummary(totals, problems, options.verbosity, palette);
  printHint(totals);
  return exitStatusOf(totals, problems);
}

}  // namespace

ExitStatus run(const VerifyOptions& given) {
  const std::optional<NewerThan> newerThan = newerThanOf(given);  // a file of the user's folder
  VerifyOptions options = given.failedRecord.empty() ? given : optionsForFailed(given);
  enterWorkFolder(options.workFolder, options.locations,
                  {&options.summaryFile, &options.harnessLog, &options.recordFolder,
                   &options.formats.layoutData.schema});
  return verify(options, newerThan);
}

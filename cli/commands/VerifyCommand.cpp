#include <algorithm>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/FailedRun.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/OutputPlaces.h"
#include "cli/commands/PairListing.h"
#include "cli/commands/RunHeader.h"
#include "cli/commands/RunPlan.h"
#include "cli/commands/SuiteRun.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/suite/FormatSelection.h"
#include "cli/system/Cores.h"
#include "cli/terminal/ErrorCause.h"

namespace {

constexpr const char* kOutputRoot = "../webcontent/bi";

void printHint(const RunTotals& totals) {
  std::error_code ignored;
  if (totals.pairs.of(Verdict::Missing) > 0 &&
      !std::filesystem::is_directory(kOutputRoot, ignored)) {
    std::cerr << "orvdiff: folder " << kOutputRoot
              << " not found; use -C to set the working folder\n";
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

/// Closes the record, which a run that was stopped leaves incomplete.
void finishRecord(RecordWriter& record, RunRecord header, const RunTotals& totals,
                  std::vector<std::string>& problems) {
  header.end = timeStamp();
  header.unverified = totals.unverified;
  header.notes = problems;
  header.status = exitStatusOf(totals, problems);
  header.complete = !totals.interrupted && totals.incomplete.empty();
  finishOrSayWhy([&] { record.finish(header); }, problems);
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
  if (options.verbosity == Verbosity::Quiet && options.recordFolder.empty()) {
    return std::nullopt;
  }
  const std::size_t asked = options.differences.maxHunks;
  return DiffOptions{asked == 0 ? 0 : std::max(asked, kLeastRecorded), asked == 0 ? 0 : kMostBytes,
                     options.differences.context};
}

ExitStatus verify(const VerifyOptions& options) {
  const std::vector<SelectedFormat> formats = selectFormats(options.formats);
  OutputPlaces places(options);
  const RunPlan plan = planRun(options);
  if (!plan.announcement.empty() && options.verbosity != Verbosity::Quiet) {
    std::cout << plan.announcement << '\n';
  }
  if (options.listOnly) {
    return listPairs(plan.reports, plan.found, formats, options.allowNone);
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
  std::optional<RecordWriter> record;
  const RunRecord header = startedRun(options, plan);
  if (!options.recordFolder.empty()) {
    record.emplace(options.recordFolder, header, EvidenceLimits{});
  }
  const Palette palette(options.color);
  GroupPrinter printer(options.groupsChanges, options.verbosity, palette,
                       viewOf(options.differences));
  NormalizedSaver saver;
  const PairOwners owners(plan.found.reports, plan.found.neighbours);
  PairVerifier verifier(
      plan.reports, formats, owners,
      {options.formats.subFolder, options.verbosity, options.maskLimits, record.has_value(),
       differencesFor(options), plan.onlyPairs ? &*plan.onlyPairs : nullptr});
  if (harnessLog) {
    harnessLog->start();
  }
  SuiteRun suiteRun(plan.reports, verifier, printer,
                    {summary ? &*summary : nullptr, options.saveNormalized ? &saver : nullptr,
                     harnessLog ? &*harnessLog : nullptr, record ? &*record : nullptr});
  suiteRun.verify(limitsOf(options), options.verbosity != Verbosity::Quiet && canShowProgress());
  printer.finish();
  RunTotals& totals = suiteRun.totals();
  totals.emptyLocations = plan.found.emptyLocations;
  totals.unsaved = saver.unsavedFiles();
  // A share may well be empty; whether the whole is, merging will show.
  const bool mayBeEmpty = options.allowNone || plan.onlyPairs || !options.shard.empty();
  std::vector<std::string> problems = findProblems(totals, mayBeEmpty);
  finishFiles(summary, harnessLog, suiteRun, totals.interrupted, problems);
  if (record) {
    finishRecord(*record, header, totals, problems);
  }
  printClosingSummary(totals, problems, options.verbosity, palette);
  printHint(totals);
  return exitStatusOf(totals, problems);
}

}  // namespace

ExitStatus run(const VerifyOptions& options) {
  return verify(options.failedRecord.empty() ? options : optionsForFailed(options));
}

#include "cli/commands/VerifyOptions.h"

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/ReportOptions.h"
#include "cli/commands/SelectionOptions.h"
#include "cli/commands/Verb.h"

namespace {

void addWorkers(CLI::App& verify, VerifyOptions& options) {
  constexpr std::size_t kMostJobs = 1024;
  verify
      .add_option("-j,--jobs", options.jobs,
                  "Verify in N processes at once (default: one per core)")
      ->check(CLI::Range(std::size_t{1}, kMostJobs))
      ->option_text("N");
  addTimeout(verify, options.secondsPerPair);
  verify
      .add_option("--memory", options.memoryMegabytes,
                  "Limit the memory of each process (default: no limit)")
      ->check(CLI::Range(std::uint64_t{64}, std::uint64_t{1} << 32))
      ->option_text("MB");
}

void addMaskLimits(CLI::App& verify, MaskLimits& limits) {
  constexpr double kAll = 100;
  verify
      .add_option(
          "--mask-limit", limits.match,
          "Warn of a pass if one match hides a difference in more than PERCENT of a file; 0: "
          "never (default: 20)")
      ->check(CLI::Range(0.0, kAll))
      ->option_text("PERCENT");
  verify
      .add_option("--mask-sum-limit", limits.sum, "The same for all matches together (default: 80)")
      ->check(CLI::Range(0.0, kAll))
      ->option_text("PERCENT");
}

void addRecord(CLI::App& verify, VerifyOptions& options) {
  verify
      .add_option("--record", options.recordFolder,
                  "Keep a record of the run in the new folder DIR")
      ->check(notEmpty())
      ->type_name("DIR");
  verify
      .add_option("--failed", options.failedRecord,
                  "Verify again only the pairs that did not pass in the record RECORD")
      ->check(notEmpty())
      ->type_name("RECORD");
  verify
      .add_option(
          "--shard", options.shard,
          "Verify only the I-th of N shares of the reports; \"orvdiff merge\" joins the records")
      ->check(notEmpty())
      ->type_name("I/N");
}

}  // namespace

void addVerifyOptions(CLI::App& verb, VerifyOptions& options) {
  addSelection(verb, options.formats);
  verb.add_option("--summary", options.summaryFile,
                  "Write a test summary to FILE (-: standard output)")
      ->check(notEmpty())
      ->type_name("FILE");
  verb.add_option("--harness-log", options.harnessLog,
                  "Write a test-harness log to FILE, with one test case per report")
      ->check(notEmpty())
      ->type_name("FILE");
  addChoice<int>(verb, "--log-level", options.harnessLogLevel,
                 "How much detail the harness log contains: minimal, concise, normal or detailed "
                 "(default: normal)",
                 {{"minimal", MOXLogLevel::Minimal},
                  {"concise", MOXLogLevel::Concise},
                  {"normal", MOXLogLevel::Normal},
                  {"detailed", MOXLogLevel::Detailed}})
      ->option_text("LEVEL");
  verb.add_flag("--save-normalized", options.saveNormalized,
                "Save the normalised texts of each difference next to the output");
  verb.add_flag("--allow-none", options.allowNone, "Succeed even if there is nothing to verify");
  addDifferences(verb, options.differences);
  addNoGroups(verb, options.groupsChanges);
  verb.add_flag("--strict{all}", options.strict,
                "Make everything that was not accounted for an error, or only what is named: "
                "--strict=orphans,outputs")
      ->option_text("[=KINDS]");
  verb.add_option("--newer-than", options.newerThan,
                  "Outputs written before TIME (2026-11-21T23:10, 12h, @SECONDS), or before FILE "
                  "was, are stale")
      ->check(notEmpty())
      ->option_text("TIME|FILE");
  addWork(verb, options.workFolder);
  addWorkers(verb, options);
  addRecord(verb, options);
  addMaskLimits(verb, options.maskLimits);
  addReportOptions(verb, options.reports);
  addLayoutData(verb, options.formats.layoutData);
  addConfig(verb, options.config);
}

void addVerify(CLI::App& app, Performer& chosen) {
  const auto [verb, verify] = addVerb<VerifyOptions>(
      app, chosen, "verify", "Compare report outputs with their stored masters", run);
  verb.add_option("LOCATION", verify.locations,
                  "A report file, or a folder to search for reports (files next to a folder "
                  "named \"Masters\"); required unless --failed names a record")
      ->option_text("...");
  verb.add_flag("--list", verify.listOnly, "List what would be compared, without comparing it");
  addVerifyOptions(verb, verify);
}

#include "cli/commands/VerifyOptions.h"

#include "cli/commands/CommandLine.h"
#include "cli/commands/Verb.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

void addPlaces(CLI::App& verify, FormatOptions& formats) {
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    if (!format.needsArguments) {
      continue;
    }
    const std::string name(format.name);
    const auto add = [&](const char* what, std::string FormatPlaces::*member, const char* help) {
      return verify
          .add_option_function<std::string>(
              "--" + name + what,
              [&formats, name, member](const std::string& text) {
                formats.places[name].*member = text;
              },
              help)
          ->group("Location of " + name + " files");
    };
    CLI::Option* const output =
        add("-output-dir", &FormatPlaces::outputDirectory,
            "Output folder below ../webcontent/bi; also selects the format");
    output->type_name("NAME");
    add("-master-sub-folder", &FormatPlaces::masterSubFolder, "Subfolder of the master folder")
        ->needs(output)
        ->type_name("NAME");
    if (format.format == OrvOutputFormat::Cgs) {
      add("-suffix", &FormatPlaces::fileNameSuffix, "Only masters whose names end in _TEXT")
          ->needs(output)
          ->type_name("TEXT");
    }
  }
}

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
                  "Verify again only the pairs that did not pass in the record DIR")
      ->check(notEmpty())
      ->type_name("DIR");
  verify
      .add_option(
          "--shard", options.shard,
          "Verify only the I-th of N shares of the reports; \"orvdiff merge\" joins the records")
      ->check(notEmpty())
      ->type_name("I/N");
}

}  // namespace

void addVerify(CLI::App& app, Performer& chosen) {
  const auto [verb, verify] = addVerb<VerifyOptions>(
      app, chosen, "verify", "Compare report outputs with their stored masters", run);
  verb.add_option("LOCATION", verify.locations,
                  "A report file, or a folder to search for reports (files next to a folder "
                  "named \"Masters\"); required unless --failed names a record")
      ->option_text("...");
  verb.add_option("-f,--format", verify.formats.names,
                  "Verify only this format; repeat it or separate names with commas "
                  "(default: all that need no further options)")
      ->allow_extra_args(false)  // the word after the name is a location
      ->delimiter(',')
      ->option_text("NAME");
  verb.add_option("--sub-folder", verify.formats.subFolder,
                  "Subfolder of the master and output folders")
      ->type_name("NAME");
  verb.add_option("--folder-suffix", verify.formats.folderSuffix,
                  "Text appended to the names of output folders")
      ->type_name("TEXT");
  verb.add_option("--summary", verify.summaryFile,
                  "Write a test summary to FILE (-: standard output)")
      ->check(notEmpty())
      ->type_name("FILE");
  verb.add_option("--harness-log", verify.harnessLog,
                  "Write a test-harness log to FILE, with one test case per report")
      ->check(notEmpty())
      ->type_name("FILE");
  addChoice<int>(verb, "--log-level", verify.harnessLogLevel,
                 "How much detail the harness log contains",
                 {{"minimal", MOXLogLevel::Minimal},
                  {"concise", MOXLogLevel::Concise},
                  {"normal", MOXLogLevel::Normal},
                  {"detailed", MOXLogLevel::Detailed}})
      ->option_text("minimal|concise|normal|detailed (default: normal)");
  verb.add_flag("--save-normalized", verify.saveNormalized,
                "Save the normalised texts of each difference next to the output");
  verb.add_flag("--list", verify.listOnly, "List what would be compared, without comparing it");
  verb.add_flag("--allow-none", verify.allowNone, "Succeed even if there is nothing to verify");
  addDifferences(verb, verify.differences);
  addNoGroups(verb, verify.groupsChanges);
  addWorkers(verb, verify);
  addRecord(verb, verify);
  addMaskLimits(verb, verify.maskLimits);
  addPlaces(verb, verify.formats);
  addLayoutData(verb, verify.formats.layoutData);
}

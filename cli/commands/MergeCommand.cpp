#include <iostream>

#include "cli/commands/CommandLine.h"
#include "cli/commands/RecordSummary.h"
#include "cli/commands/Verb.h"
#include "cli/record/Merge.h"

namespace {

struct MergeOptions : CommonOptions {
  std::vector<std::string> records;
  std::string target;
  bool isPartial = false;  ///< shards may be missing
};

ExitStatus run(const MergeOptions& options) {
  const RunRecord merged =
      mergeRecords(options.records, options.target, EvidenceLimits{}, !options.isPartial);
  if (options.verbosity != Verbosity::Quiet) {
    printRecordSummary(merged, Palette(options.color));
  }
  return static_cast<ExitStatus>(merged.status);
}

}  // namespace

void addMerge(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<MergeOptions>(
      app, chosen, "merge", "Join the records of shards into the record of the whole run", run);
  verb.add_option("RECORD", options.records, "Folders that verify --shard --record wrote")
      ->required()
      ->type_name("");
  verb.add_option("-o,--output", options.target, "The new folder for the joined record")
      ->required()
      ->check(notEmpty())
      ->type_name("DIR");
  verb.add_flag("--partial", options.isPartial, "Accept that shards are missing");
}

#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/RecordSummary.h"
#include "cli/record/Merge.h"

ExitStatus run(const MergeOptions& options) {
  const RunRecord merged =
      mergeRecords(options.records, options.target, EvidenceLimits{}, !options.isPartial);
  if (options.verbosity != Verbosity::Quiet) {
    printRecordSummary(merged, Palette(options.color));
  }
  return static_cast<ExitStatus>(merged.status);
}

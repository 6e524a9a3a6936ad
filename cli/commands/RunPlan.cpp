#include "cli/commands/RunPlan.h"

#include <algorithm>

#include "cli/record/ContentHash.h"
#include "cli/record/RecordReader.h"
#include "cli/suite/PairOwners.h"
#include "cli/suite/Shard.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace {

/// Takes up what did not pass in a record.
RunPlan planFailed(const VerifyOptions& options) {
  RecordReader record(options.failedRecord);
  RunPlan plan;
  plan.onlyPairs.emplace();
  std::size_t pairs = 0;
  while (const auto pair = record.next()) {
    ++pairs;
    if (isFailure(pair->verdict)) {
      ++plan.onlyCount;
      (*plan.onlyPairs)[{pair->report, pair->format, pair->subFolder}].push_back(
          {pair->master, pair->output});
      plan.reports.push_back(pair->report);
    }
  }
  std::sort(plan.reports.begin(), plan.reports.end());
  plan.reports.erase(std::unique(plan.reports.begin(), plan.reports.end()), plan.reports.end());
  plan.found.reports = plan.found.pathsInLocation = plan.reports;
  plan.announcement = std::to_string(plan.onlyCount) + " of " + countOf(pairs, "pair") +
                      ", those that did not pass in the run of " + record.run().start;
  if (!record.run().complete) {
    plan.uncompared.push_back("the run of " + options.failedRecord +
                              " did not come to its end; what it left out is left out here, too");
  }
  return plan;
}

void keepShard(RunPlan& plan, const Shard& shard) {
  plan.reports.clear();
  for (std::size_t i = 0; i < plan.found.reports.size(); ++i) {
    if (isInShard(shard, stemOf(plan.found.pathsInLocation[i]))) {
      plan.reports.push_back(plan.found.reports[i]);
    }
  }
}

}  // namespace

RunPlan planRun(const VerifyOptions& options) {
  if (!options.failedRecord.empty()) {
    return planFailed(options);
  }
  if (options.locations.empty()) {
    throw CommandError("verify needs a location: a report's own file, or a folder of reports");
  }
  RunPlan plan;
  plan.found = findReports(options.locations);
  plan.reports = plan.found.reports;
  if (!options.shard.empty()) {
    keepShard(plan, parseShard(options.shard));
    plan.announcement = "Shard " + options.shard + ": " + std::to_string(plan.reports.size()) +
                        " of " + countOf(plan.found.reports.size(), "report");
  }
  return plan;
}

std::string suiteHash(const FoundReports& found, const FormatOptions& formats,
                      const std::string& configHash) {
  constexpr char kSeparator = '\n';
  std::string text;
  for (const std::vector<std::string>* const list : {&found.pathsInLocation, &formats.names}) {
    for (const std::string& entry : *list) {
      text += entry + kSeparator;
    }
    text += kSeparator;
  }
  for (const auto& [name, places] : formats.places) {
    text += name + kSeparator + places.outputDirectory + kSeparator + places.masterSubFolder +
            kSeparator + places.fileNameSuffix + kSeparator;
  }
  for (const std::string& subFolder : formats.subFolders) {
    text += subFolder + kSeparator;
  }
  return contentHash(text + formats.folderSuffix + kSeparator + formats.layoutData.namespaceUri +
                     (configHash.empty() ? "" : kSeparator + configHash));
}

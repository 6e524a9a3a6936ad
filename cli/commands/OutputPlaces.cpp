#include "cli/commands/OutputPlaces.h"

#include <sys/stat.h>

#include "cli/report/SummaryFile.h"
#include "cli/system/CommandError.h"
#include "orvdiff/platform/VELErrors.h"

OutputPlaces::OutputPlaces(const VerifyOptions& options) {
  if (options.listOnly) {
    return;
  }
  if (!options.harnessLog.empty()) {
    harnessLog.emplace("harness log", options.harnessLog);
  }
  if (!options.summaryFile.empty() && !SummaryFile::isStandardOutput(options.summaryFile)) {
    summary.emplace("summary", options.summaryFile);
  }
  if (summary && harnessLog && summary->isSameFile(*harnessLog)) {
    throw CommandError("the summary and the harness log cannot both be " + options.harnessLog);
  }
}

void OutputPlaces::requireFree(const VerifyOptions& options, const FoundReports& found,
                               const std::vector<SelectedFormat>& formats) const {
  if (!summary && !harnessLog) {
    return;
  }
  requireOther(options.formats.layoutData.schema, "the layout-data schema");
  for (const std::string& report : found.reports) {
    requireOther(report, "a report");
    for (const SelectedFormat& selected : formats) {
      requireNoPair(options, report, selected);
    }
  }
}

void OutputPlaces::requireNoPair(const VerifyOptions& options, const std::string& report,
                                 const SelectedFormat& selected) const {
  std::vector<OrvFilePair> pairs;
  try {
    pairs = selected.engine->findPairs(report);
  } catch (const VELOutOfMemoryError&) {
    throw;
  } catch (const VELThrowable&) {
    return;  // the run reports a folder that cannot be read
  }
  for (const OrvFilePair& pair : pairs) {
    requireOther(pair.master, "a master");
    requireOther(pair.actual, "an output");
    if (options.saveNormalized) {
      requireOther(pair.actual + ".normalized_master", "a normalised text");
      requireOther(pair.actual + ".normalized_actual", "a normalised text");
    }
  }
}

void OutputPlaces::requireOther(const std::string& path, const char* role) const {
  struct stat status = {};
  if (path.empty() || stat(path.c_str(), &status) != 0) {
    return;
  }
  for (const std::optional<OutputPlace>* place : {&summary, &harnessLog}) {
    if (*place && (*place)->isSameFile(status)) {
      (*place)->refuse(path + " is " + role + " of this run");
    }
  }
}

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
  for (const ReportRequest& request : options.reports) {
    if (request.kind->value == nullptr && request.file == ReportFiles::kStandardOutput) {
      throw CommandError(std::string("verify prints results on standard output; name a file for ") +
                         request.kind->option);
    }
  }
  const bool isRecorded = !options.recordFolder.empty();
  reports.emplace(options.reports,
                  isRecorded ? std::vector{options.recordFolder} : std::vector<std::string>());
  OutputPlace::requireDistinct(all());
}

std::vector<const OutputPlace*> OutputPlaces::all() const {
  std::vector<const OutputPlace*> places;
  for (const std::optional<OutputPlace>* place : {&summary, &harnessLog}) {
    if (*place) {
      places.push_back(&**place);
    }
  }
  if (reports) {
    const std::vector<const OutputPlace*> more = reports->places();
    places.insert(places.end(), more.begin(), more.end());
  }
  return places;
}

void OutputPlaces::requireFree(const VerifyOptions& options, const FoundReports& found,
                               const std::vector<SelectedFormat>& formats) const {
  if (all().empty()) {
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
  for (const OutputPlace* const place : all()) {
    if (place->isSameFile(status)) {
      place->refuse(path + " is " + role + " of this run");
    }
  }
}

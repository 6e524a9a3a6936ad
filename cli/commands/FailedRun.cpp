#include "cli/commands/FailedRun.h"

#include <filesystem>
#include <system_error>

#include "cli/commands/ConfigOptions.h"
#include "cli/record/RecordReader.h"
#include "cli/report/ReportFiles.h"
#include "cli/report/SummaryFile.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

bool isAnyGiven(const FormatOptions& formats) {
  const LayoutDataOptions& layoutData = formats.layoutData;
  return !formats.names.empty() || !formats.places.empty() || formats.allSubFolders ||
         formats.subFolders != FormatOptions().subFolders || !formats.folderSuffix.empty() ||
         !layoutData.schema.empty() || !layoutData.namespaceUri.empty();
}

void makeAbsolute(std::string& path) {
  if (!path.empty()) {
    path = fs::absolute(path).string();
  }
}

}  // namespace

VerifyOptions optionsForFailed(VerifyOptions options) {
  if (!options.locations.empty() || !options.shard.empty() || isAnyGiven(options.formats) ||
      !options.workFolder.empty()) {
    throw CommandError(
        "--failed takes reports, formats and the working folder from the record; give it no "
        "location, --shard, --work, or option for formats");
  }
  makeAbsolute(options.failedRecord);
  makeAbsolute(options.config.file);
  makeAbsolute(options.recordFolder);
  makeAbsolute(options.harnessLog);
  if (!SummaryFile::isStandardOutput(options.summaryFile)) {
    makeAbsolute(options.summaryFile);
  }
  for (ReportRequest& request : options.reports) {
    if (request.file != ReportFiles::kStandardOutput) {
      makeAbsolute(request.file);
    }
  }
  const RunRecord run = RecordReader(options.failedRecord).run();
  std::error_code error;
  fs::current_path(run.workingFolder, error);
  if (error) {
    throw CommandError("the run of " + options.failedRecord + " worked in the folder " +
                       run.workingFolder + ", which cannot be entered: " + error.message());
  }
  options.formats = run.formats;
  options.config = configOfRun(options.config, run.config);
  // The record tells them, whatever the suite's file says now.
  options.given.insert({"--work", "--format", "--sub-folder", "--all-sub-folders",
                        "--folder-suffix", "--layout-schema", "--layout-namespace"});
  return options;
}

#include "cli/record/Merge.h"

#include <utility>

#include "cli/record/JoinedRecords.h"
#include "cli/record/RecordFolder.h"

RunRecord mergeRecords(const std::vector<std::string>& folders, const std::string& target,
                       const EvidenceLimits& limits, bool mustBeWhole) {
  JoinedRecords records(folders, mustBeWhole);
  RunRecord unfinished = records.run();
  unfinished.complete = false;
  RecordWriter writer(target, unfinished, limits);
  while (auto pair = records.next()) {
    writer.add(std::move(pair->record), pair->source.folder() + '/' + kEvidenceFolder);
  }
  return writer.finish(records.run());
}

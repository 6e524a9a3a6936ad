#pragma once

#include <string>
#include <vector>

#include "cli/record/RecordWriter.h"
#include "cli/record/RunRecord.h"

/// Puts the records of shards together as the record of one run, in `target`: times and hosts
/// aside, the same bytes as if one run had verified all of it. Some shards of a suite give a record
/// of those shards, which can be merged further.
///
/// Returns the merged run, its status the one that the whole run would have ended with. Raises
/// `CommandError` when a shard is there twice, when the records are of different suites, versions
/// or numbers of shards, and when `mustBeWhole` and a shard is missing.
RunRecord mergeRecords(const std::vector<std::string>& folders, const std::string& target,
                       const EvidenceLimits& limits, bool mustBeWhole);

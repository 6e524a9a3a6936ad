#pragma once

#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <vector>

#include "cli/record/RecordReader.h"

/// A pair, and the record that holds the evidence of it.
struct JoinedPair {
  PairRecord record;
  const RecordReader& source;
};

/// Reads the records of shards as if they were the record of one run over all of them.
class JoinedRecords {
 public:
  /// Raises `CommandError` when a shard is there twice, when the records are of different suites,
  /// versions or numbers of shards, and when `mustBeWhole` and a shard is missing. `folders` must
  /// not be empty.
  JoinedRecords(const std::vector<std::string>& folders, bool mustBeWhole);
  ~JoinedRecords();
  JoinedRecords(const JoinedRecords&) = delete;
  JoinedRecords& operator=(const JoinedRecords&) = delete;

  /// The run as a whole; its status is the one that the whole run would have ended with. Says
  /// nothing of the pairs.
  const RunRecord& run() const { return m_run; }

  /// The next pair in the order of the run, or nothing after the last. Raises what
  /// `RecordReader::next` raises.
  std::optional<JoinedPair> next();

 private:
  struct Source;
  /// Runs verify reports in the order of their paths, and a report is in one shard only.
  struct IsLater {
    bool operator()(const Source* a, const Source* b) const;
  };

  RunRecord joinRuns(bool mustBeWhole) const;
  void enqueue(Source& source);

  std::vector<std::unique_ptr<Source>> m_sources;
  std::priority_queue<Source*, std::vector<Source*>, IsLater> m_queue;
  RunRecord m_run;
};

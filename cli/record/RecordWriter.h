#pragma once

#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <unordered_set>

#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"

/// How many bytes of evidence a record keeps.
struct EvidenceLimits {
  std::uint64_t perFile = std::uint64_t{4} << 20;
  std::uint64_t total = std::uint64_t{768} << 20;
};

/// Writes the record of a run into a folder while the run goes on:
///
///     run.json         the run; "complete" is true once all of it is there
///     pairs.jsonl      one line per pair, in the order of the run
///     evidence/HASH    the bytes of masters and outputs that did not pass, each content once
///
/// A lock keeps a second run out for as long as the first lives; the system drops it with the
/// process.
class RecordWriter {
 public:
  /// Creates the folder, or takes an empty one. Raises `CommandError` when it holds anything, is in
  /// use, or cannot be written.
  RecordWriter(std::string folder, const RunRecord& run, const EvidenceLimits& limits);
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  /// Adds a pair, with what may be kept of its files if it did not pass. Evidence is read from
  /// `evidenceFolder` of another record if given, else from the files themselves; contents that
  /// are no longer what was compared are left out, and the record says so.
  void add(PairRecord pair, const std::string& evidenceFolder = {});

  /// Writes run.json as it is at the end, and returns it with the pairs counted. Raises
  /// `CommandError` when any part of the record could not be written; the record then stays
  /// incomplete.
  RunRecord finish(RunRecord run);

 private:
  std::string keep(const std::string& file, const FileFacts& facts, const std::string& folder);
  void writeRun(const RunRecord& run);
  void unlock();

  const std::string m_folder;
  const std::string m_lockPath;
  const EvidenceLimits m_limits;
  int m_lock = -1;
  std::ofstream m_pairs;
  std::uint64_t m_pairCount = 0;
  std::map<std::string, std::uint64_t> m_totals;
  std::uint64_t m_evidenceSize = 0;
  std::unordered_set<std::string> m_kept;  ///< hashes
};

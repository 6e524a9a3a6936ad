#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"

/// Reads the record of a run from its folder, pair by pair.
///
/// A run that was cut off leaves a record that is not complete; what it holds can be read all the
/// same, up to the last whole line.
class RecordReader {
 public:
  /// Raises `CommandError`, naming folder and file, when there is no record or it is damaged.
  explicit RecordReader(std::string folder);

  const std::string& folder() const { return m_folder; }
  const RunRecord& run() const { return m_run; }

  /// The next pair, or nothing after the last. Raises `CommandError`, naming the line, for one that
  /// is damaged, and when a complete record holds more or fewer pairs than it says.
  std::optional<PairRecord> next();

  /// Where the line of the next pair begins, for `readAt`.
  std::uint64_t position() const { return m_position; }

  /// The pair at a `position` that was told before its `next`. Does not change what comes next.
  /// Raises `CommandError` if it is no longer there.
  PairRecord readAt(std::uint64_t position) const;

  /// The bytes kept as evidence under `hash`. Raises `CommandError` when they are not there or are
  /// not what the hash says.
  std::string evidence(const std::string& hash) const;

 private:
  const std::string m_folder;
  RunRecord m_run;
  std::ifstream m_pairs;
  std::uint64_t m_count = 0;
  std::uint64_t m_position = 0;  ///< in bytes
};

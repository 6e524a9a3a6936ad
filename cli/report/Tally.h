#pragma once

#include <array>
#include <cstddef>

#include "cli/record/PairRecord.h"

/// Counts the pairs of a run by verdict.
class Tally {
 public:
  void add(const PairRecord& record);

  std::size_t of(Verdict verdict) const { return m_counts[static_cast<std::size_t>(verdict)]; }

  /// All pairs. A format whose masters could not be listed counts as an error, but is no pair.
  std::size_t pairs() const { return m_pairs; }

  bool allPassed() const;

  /// Whether a pair was not compared, or not to its end.
  bool hasTrouble() const;

 private:
  std::array<std::size_t, static_cast<std::size_t>(Verdict::NotRun) + 1> m_counts = {};
  std::size_t m_pairs = 0;
};

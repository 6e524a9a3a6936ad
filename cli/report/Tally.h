#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>

#include "cli/record/PairRecord.h"

/// Counts the pairs of a run by verdict.
class Tally {
 public:
  void add(const PairRecord& record);

  std::size_t of(Verdict verdict) const { return m_counts[static_cast<std::size_t>(verdict)]; }

  /// All pairs. A format whose masters could not be listed counts as an error, but is no pair.
  std::size_t pairs() const { return m_pairs; }

  /// Passes that rest on an outsized mask.
  std::size_t outsizedMasks() const { return m_outsizedMasks; }

  /// By rule, how many pairs passed with its help. Only of pairs whose records name their rules.
  const std::map<std::string, std::size_t>& passesByRule() const { return m_passesByRule; }

  /// Everything counted but passes.
  std::size_t notPassed() const;

  bool allPassed() const { return notPassed() == 0; }

  /// Whether a pair was not compared, or not to its end.
  bool hasTrouble() const;

 private:
  std::array<std::size_t, static_cast<std::size_t>(Verdict::NotRun) + 1> m_counts = {};
  std::size_t m_pairs = 0;
  std::size_t m_outsizedMasks = 0;
  std::map<std::string, std::size_t> m_passesByRule;
};

#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>

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

  /// Patterns that a suite's own file adds, by name, so that their share can be told.
  void setSuitePatterns(std::set<std::string> names) { m_suitePatterns = std::move(names); }

  /// How many of these helped a pair to pass.
  std::size_t suitePatternsUsed() const;

  /// Pairs that passed with the help of the suite's own patterns.
  std::size_t passesBySuite() const { return m_passesBySuite; }

  /// Pairs that are known, by the reasons that make them so.
  struct KnownPairs {
    KnownReason reason;
    std::size_t pairs = 0;
  };
  const std::map<std::string, KnownPairs>& knownByPlace() const { return m_known; }

  /// Everything counted but passes, and what is known.
  std::size_t failures() const;

  bool hasFailures() const { return failures() > 0; }

  /// Whether a pair was not compared, or not to its end.
  bool hasTrouble() const;

 private:
  std::array<std::size_t, static_cast<std::size_t>(Verdict::NotRun) + 1> m_counts = {};
  std::size_t m_pairs = 0;
  std::size_t m_outsizedMasks = 0;
  std::map<std::string, std::size_t> m_passesByRule;
  std::set<std::string> m_suitePatterns;
  std::size_t m_passesBySuite = 0;
  std::map<std::string, KnownPairs> m_known;  ///< by place in the file
};

#include "cli/report/Tally.h"

#include <algorithm>
#include <numeric>

void Tally::add(const PairRecord& record) {
  ++m_counts[static_cast<std::size_t>(record.verdict)];
  m_pairs += record.master.empty() ? 0 : 1;
  m_outsizedMasks += record.mask ? 1 : 0;
  if (record.known) {
    for (const KnownReason& reason : record.known->reasons) {
      KnownPairs& known = m_known[reason.place];
      known.reason = reason;
      ++known.pairs;
    }
  }
  if (record.verdict == Verdict::Passed) {
    m_passesBySuite +=
        std::any_of(record.rules.begin(), record.rules.end(),
                    [this](const std::string& rule) { return m_suitePatterns.count(rule) > 0; })
            ? 1
            : 0;
    for (const std::string& rule : record.rules) {
      ++m_passesByRule[rule];
    }
  }
}

std::size_t Tally::suitePatternsUsed() const {
  return static_cast<std::size_t>(
      std::count_if(m_suitePatterns.begin(), m_suitePatterns.end(),
                    [this](const std::string& name) { return m_passesByRule.count(name) > 0; }));
}

std::size_t Tally::failures() const {
  return std::accumulate(m_counts.begin(), m_counts.end(), std::size_t{0}) - of(Verdict::Passed) -
         of(Verdict::Known);
}

bool Tally::hasTrouble() const {
  return of(Verdict::Partly) + of(Verdict::Error) + of(Verdict::TimedOut) + of(Verdict::Crashed) +
             of(Verdict::NotRun) >
         0;
}

#include "cli/report/Tally.h"

#include <numeric>

void Tally::add(const PairRecord& record) {
  ++m_counts[static_cast<std::size_t>(record.verdict)];
  m_pairs += record.master.empty() ? 0 : 1;
  m_outsizedMasks += record.mask ? 1 : 0;
  if (record.verdict == Verdict::Passed) {
    for (const std::string& rule : record.rules) {
      ++m_passesByRule[rule];
    }
  }
}

std::size_t Tally::notPassed() const {
  return std::accumulate(m_counts.begin(), m_counts.end(), std::size_t{0}) - of(Verdict::Passed);
}

bool Tally::hasTrouble() const {
  return of(Verdict::Partly) + of(Verdict::Error) + of(Verdict::TimedOut) + of(Verdict::Crashed) +
             of(Verdict::NotRun) >
         0;
}

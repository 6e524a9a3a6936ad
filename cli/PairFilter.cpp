#include "cli/PairFilter.h"

#include "cli/Interrupt.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// A report's path without the extension; reports that differ in it only share their masters.
std::string_view stemOf(std::string_view report) {
  const std::size_t slash = report.rfind('/');
  const std::size_t nameStart = slash == std::string_view::npos ? 0 : slash + 1;
  const std::size_t dot = report.rfind('.');
  const bool hasExtension = dot != std::string_view::npos && dot > nameStart;
  return report.substr(0, hasExtension ? dot : report.size());
}

}  // namespace

void PairFilter::startReport(std::string_view report, std::string_view format) {
  m_stem = stemOf(report);
  m_format = format;
  m_countSinceStart = 0;
}

std::vector<std::string> PairFilter::unverifiedAmong(
    const std::vector<std::string>& reports) const {
  std::unordered_set<std::string_view> verified = m_claimedStems;
  for (const auto& [pair, stem] : m_stemOfPair) {
    verified.insert(stem);
  }
  std::vector<std::string> unverified;
  for (const std::string& report : reports) {
    if (verified.count(stemOf(report)) == 0) {
      unverified.push_back(report);
    }
  }
  return unverified;
}

void PairFilter::comparisonNotification(const OrvDiffResult& result) {
  ++m_countSinceStart;
  if (isFirstTime(result)) {
    for (OrvDiffListener* const listener : m_listeners) {
      result.notifyListener(*listener);
    }
  }
  if (InterruptWatch::isStopWanted()) {
    throw Interrupted();
  }
}

bool PairFilter::isFirstTime(const OrvDiffResult& result) {
  std::string pair(m_format);
  pair += '\n' + result.getMasterName() + '\n' + result.getActualName();
  const auto [known, inserted] = m_stemOfPair.try_emplace(std::move(pair), m_stem);
  if (m_stem.size() > known->second.size()) {
    known->second = m_stem;
  }
  return inserted;
}

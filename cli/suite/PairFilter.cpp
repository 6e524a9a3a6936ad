#include "cli/suite/PairFilter.h"

#include <algorithm>

#include "cli/suite/ReportFinder.h"
#include "cli/system/Interrupt.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Where the name starts in a path.
std::size_t nameStart(std::string_view path) {
  return path.rfind('/') + 1;  // 0 without a folder
}

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

}  // namespace

std::string identityOf(std::string_view stem, std::string_view format, std::string_view master) {
  const std::string_view folder = stem.substr(0, nameStart(stem));
  std::string identity;
  identity.reserve(format.size() + folder.size() + master.size() + 2);
  return identity.append(format).append(1, '\n').append(folder).append(1, '\n').append(master);
}

PairFilter::PairFilter(const std::vector<std::string>& neighbours) {
  for (const std::string& neighbour : neighbours) {
    m_neighbours.emplace_back(stemOf(neighbour));
  }
  std::sort(m_neighbours.begin(), m_neighbours.end());
}

void PairFilter::startReport(std::string_view report, std::string_view format) {
  m_stem = stemOf(report);
  m_format = format;
  m_countSinceStart = 0;
}

std::vector<std::string> PairFilter::unverifiedAmong(
    const std::vector<std::string>& reports) const {
  std::unordered_set<std::string_view> verified = m_claimedStems;
  verified.reserve(verified.size() + m_stemOfPair.size());
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
  const bool isStopWanted = InterruptWatch::isStopWanted();
  if ((result.isPassed() || !isStopWanted) && isFirstTime(result)) {
    for (OrvDiffListener* const listener : m_listeners) {
      result.notifyListener(*listener);
    }
  }
  if (isStopWanted) {
    throw Interrupted();
  }
}

bool PairFilter::isFirstTime(const OrvDiffResult& result) {
  const std::string_view owner = ownerOf(result.getMasterName());
  return m_stemOfPair.try_emplace(identityOf(m_stem, m_format, result.getMasterName()), owner)
      .second;
}

/// The stem of the current report, or the longest of its neighbours' that `master` starts with.
std::string_view PairFilter::ownerOf(const std::string& master) const {
  const std::string_view name = std::string_view(master).substr(nameStart(master));
  std::string_view owner = m_stem;
  auto neighbour = std::lower_bound(m_neighbours.begin(), m_neighbours.end(), m_stem);
  for (; neighbour != m_neighbours.end() && startsWith(*neighbour, m_stem); ++neighbour) {
    const std::string_view itsName = std::string_view(*neighbour).substr(nameStart(*neighbour));
    if (neighbour->size() > owner.size() && startsWith(name, itsName)) {
      owner = *neighbour;
    }
  }
  return owner;
}

#include "cli/suite/StemIndex.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

}  // namespace

StemIndex::StemIndex(std::vector<Stem> stems) : m_stems(std::move(stems)) {
  std::sort(m_stems.begin(), m_stems.end(), [](const Stem& one, const Stem& other) {
    return std::tie(one.text, one.report) < std::tie(other.text, other.report);
  });
  const auto end =
      std::unique(m_stems.begin(), m_stems.end(),
                  [](const Stem& one, const Stem& other) { return one.text == other.text; });
  m_stems.erase(end, m_stems.end());
  m_shorter.reserve(m_stems.size());
  for (std::size_t i = 0; i < m_stems.size(); ++i) {
    // Sorted, all that begin with a text follow it: what this one begins with is the one before
    // it, or something that that one begins with.
    std::int64_t shorter = static_cast<std::int64_t>(i) - 1;
    while (shorter >= 0 &&
           !startsWith(m_stems[i].text, m_stems[static_cast<std::size_t>(shorter)].text)) {
      shorter = m_shorter[static_cast<std::size_t>(shorter)];
    }
    m_shorter.push_back(shorter);
  }
}

std::int64_t StemIndex::longestStart(std::string_view name) const {
  const auto after =
      std::upper_bound(m_stems.begin(), m_stems.end(), name,
                       [](std::string_view text, const Stem& stem) { return text < stem.text; });
  std::int64_t start = (after - m_stems.begin()) - 1;
  while (start >= 0 && !startsWith(name, m_stems[static_cast<std::size_t>(start)].text)) {
    start = m_shorter[static_cast<std::size_t>(start)];
  }
  return start;
}

const StemIndex::Stem* StemIndex::longest(std::string_view name) const {
  const std::int64_t start = longestStart(name);
  return start >= 0 ? &m_stems[static_cast<std::size_t>(start)] : nullptr;
}

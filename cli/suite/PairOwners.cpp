#include "cli/suite/PairOwners.h"

#include <algorithm>

#include "orvdiff/engine/OrvDiffFileEngine.h"

namespace {

/// Where the name starts in a path.
std::size_t nameStart(std::string_view path) {
  return path.rfind('/') + 1;  // 0 without a folder
}

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

/// A stem alone does not make a master: a format may want more between stem and extension.
bool finds(const OrvDiffFileEngine& engine, const std::string& report, const std::string& master) {
  const std::vector<OrvFilePair> pairs = engine.findPairs(report);
  return std::any_of(pairs.begin(), pairs.end(),
                     [&master](const OrvFilePair& pair) { return pair.master == master; });
}

}  // namespace

std::string_view stemOf(std::string_view report) {
  const std::size_t dot = report.rfind('.');
  const bool hasExtension = dot != std::string_view::npos && dot > nameStart(report);
  return report.substr(0, hasExtension ? dot : report.size());
}

PairOwners::PairOwners(const std::vector<std::string>& reports,
                       const std::vector<std::string>& neighbours)
    : m_reports(reports), m_neighbours(neighbours) {
  std::sort(m_neighbours.begin(), m_neighbours.end());
}

PairOwners::Owner PairOwners::ownerOf(const std::string& report, const std::string& master,
                                      const OrvDiffFileEngine& engine) const {
  const std::size_t ownLength = stemOf(report).size();
  const std::string* const other = longestName(m_reports, report, master, ownLength, engine);
  const std::size_t longest = other != nullptr ? stemOf(*other).size() : ownLength;
  if (longestName(m_neighbours, report, master, longest + 1, engine) != nullptr) {
    return Owner::Neighbour;
  }
  return other == nullptr || *other == report ? Owner::Itself : Owner::Other;
}

/// The report among `candidates` with the longest stem, of `atLeast` so many bytes, that finds
/// `master`; of equal ones the first. All that can are in one stretch of the sorted list: they
/// start with the stem of `report`.
const std::string* PairOwners::longestName(const Reports& candidates, const std::string& report,
                                           const std::string& master, std::size_t atLeast,
                                           const OrvDiffFileEngine& engine) const {
  const std::string_view stem = stemOf(report);
  const std::string_view masterName = std::string_view(master).substr(nameStart(master));
  const std::string* owner = nullptr;
  auto candidate = std::lower_bound(candidates.begin(), candidates.end(), stem);
  for (; candidate != candidates.end() && startsWith(*candidate, stem); ++candidate) {
    const std::string_view itsStem = stemOf(*candidate);
    const std::size_t wanted = owner != nullptr ? stemOf(*owner).size() + 1 : atLeast;
    if (itsStem.size() >= wanted && nameStart(itsStem) == nameStart(stem) &&
        startsWith(masterName, itsStem.substr(nameStart(itsStem))) &&
        (*candidate == report || finds(engine, *candidate, master))) {
      owner = &*candidate;
    }
  }
  return owner;
}

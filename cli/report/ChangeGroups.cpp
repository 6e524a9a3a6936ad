#include "cli/report/ChangeGroups.h"

#include <algorithm>

void ChangeGroups::add(const PairRecord& pair) {
  const std::size_t number = m_pairs++;
  if (!pair.difference) {
    return;
  }
  for (const DiffChange& change : pair.difference->changes) {
    const auto [found, isNew] = m_indexOf.try_emplace(change.group, m_groups.size());
    if (isNew) {
      m_groups.push_back({change.group, change.removed, change.added, {}, 0});
    }
    ChangeGroup& group = m_groups[found->second];
    group.pairs.push_back(number);
    group.places += change.count;
  }
}

std::vector<ChangeGroup> ChangeGroups::rarestFirst() const {
  std::vector<ChangeGroup> groups = m_groups;
  std::stable_sort(groups.begin(), groups.end(), [](const ChangeGroup& a, const ChangeGroup& b) {
    return a.pairs.size() < b.pairs.size();
  });
  return groups;
}

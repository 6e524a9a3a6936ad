#include "cli/report/ChangeGroups.h"

#include <algorithm>
#include <tuple>

#include "cli/record/JsonText.h"

std::string toJson(const std::vector<ChangeGroup>& groups) {
  std::string json;
  for (const ChangeGroup& group : groups) {
    std::string pairs;
    for (const std::size_t pair : group.pairs) {
      pairs += (pairs.empty() ? "" : ",") + std::to_string(pair);
    }
    json += (json.empty() ? "\n" : ",\n");
    json += "{\"id\":" + textToJson(group.id).dump() +
            ",\"removed\":" + textToJson(group.removed).dump() +
            ",\"added\":" + textToJson(group.added).dump() +
            ",\"places\":" + std::to_string(group.places) + ",\"pairs\":[" + pairs + "]}";
  }
  return '[' + json + ']';
}

void ChangeGroups::add(const PairRecord& pair) {
  const std::size_t number = m_pairs++;
  if (!pair.difference) {
    return;
  }
  const std::string& kind = pair.difference->kind;
  const bool hasWords = kind != "picture" && kind != "bytes";
  for (const DiffChange& change : pair.difference->changes) {
    const auto [found, isNew] = m_indexOf.try_emplace(change.group, m_groups.size());
    if (isNew) {
      m_groups.push_back({change.group, change.removed, change.added, {}, 0, hasWords});
    }
    ChangeGroup& group = m_groups[found->second];
    group.pairs.push_back(number);
    group.places += change.count;
  }
}

std::vector<ChangeGroup> ChangeGroups::rarestFirst() const {
  std::vector<ChangeGroup> groups = m_groups;
  std::stable_sort(groups.begin(), groups.end(), [](const ChangeGroup& a, const ChangeGroup& b) {
    return std::make_tuple(a.pairs.size(), !a.hasWords) <
           std::make_tuple(b.pairs.size(), !b.hasWords);
  });
  return groups;
}

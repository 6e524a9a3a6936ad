#include "cli/report/ChangeGroups.h"

#include <algorithm>
#include <tuple>

#include "cli/record/JsonText.h"

namespace {

/// Pixels and bytes have to be looked at.
bool hasWords(const ChangeGroup& group) {
  return group.kind != "picture" && group.kind != "bytes";
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t number) {
  constexpr std::uint64_t kOdd = 0x9E37'79B9'7F4A'7C15U;
  const std::uint64_t sum = (hash ^ number) * kOdd;
  return sum ^ (sum >> 29U);
}

}  // namespace

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

std::size_t ChangeGroups::add(const PairRecord& pair) {
  const std::size_t number = m_pairs++;
  const std::size_t known = m_groups.size();
  if (!pair.difference || pair.verdict == Verdict::Known) {
    return 0;  // a change that is known asks for nothing
  }
  for (const DiffChange& change : pair.difference->changes) {
    const auto [found, isNew] = m_indexOf.try_emplace(change.group, m_groups.size());
    if (isNew) {
      m_groups.push_back(
          {change.group, pair.difference->kind, change.removed, change.added, {}, 0, 0, 0});
    }
    ChangeGroup& group = m_groups[found->second];
    if (group.pairs.size() < m_mostPairs) {
      group.pairs.push_back(number);
    }
    ++group.pairCount;
    group.pairsHash = mixed(group.pairsHash, number);
    group.places += change.count;
  }
  return m_groups.size() - known;
}

const ChangeGroup* ChangeGroups::find(const std::string& id) const {
  const auto found = m_indexOf.find(id);
  return found != m_indexOf.end() ? &m_groups[found->second] : nullptr;
}

std::vector<ChangeGroup> ChangeGroups::rarestFirst() const {
  std::vector<ChangeGroup> groups = m_groups;
  std::stable_sort(groups.begin(), groups.end(), [](const ChangeGroup& a, const ChangeGroup& b) {
    return std::make_tuple(a.pairCount, !hasWords(a)) < std::make_tuple(b.pairCount, !hasWords(b));
  });
  return groups;
}

#include "cli/review/ReviewMaterial.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/report/GroupText.h"
#include "cli/terminal/Printable.h"

namespace {

std::string idOf(const std::string& text) {
  constexpr std::size_t kDigits = 8;  // as many as those of changes
  return contentHash(text).substr(0, kDigits);
}

bool isToReview(const PairRecord& pair) {
  return isFailure(pair.verdict) && pair.verdict != Verdict::NotRun;
}

/// Whether the changes of the pair are all there is to say about it.
bool isToldInChanges(const PairRecord& pair) {
  return pair.difference && !pair.difference->changes.empty() && !hasUnlistedChanges(pair);
}

}  // namespace

/// Puts pairs into items as they are read.
class ReviewMaterial::Sorter {
 public:
  /// Call it for every pair to review, in the order of their numbers.
  void add(const PairRecord& pair, std::size_t number, bool isAcceptable) {
    if (isToldInChanges(pair)) {
      m_groups.add(pair);
      addExample(pair, number);
    } else {
      m_groups.add({});  // it counts the pairs
      addOther(pair, number, isAcceptable);
    }
  }

  std::vector<ReviewItem> rarestFirst() {
    std::vector<ReviewItem> items = std::move(m_others);
    std::map<std::pair<std::size_t, std::uint64_t>, std::size_t> itemOf;
    for (ChangeGroup& group : m_groups.rarestFirst()) {
      const auto [found, isNew] =
          itemOf.try_emplace({group.pairCount, group.pairsHash}, items.size());
      const auto example = m_exampleOf.find(group.id);
      if (isNew) {
        items.push_back({group.id, {}, {}, std::move(group.pairs), 0, false});
        items.back().example = items.back().pairs.front();
      }
      ReviewItem& item = items[found->second];
      if (example != m_exampleOf.end() && !item.hasPlace) {
        item.example = example->second.pair;
        item.hasPlace = true;
      }
      group.pairs.clear();
      item.changes.push_back(std::move(group));
    }
    std::stable_sort(items.begin(), items.end(),
                     [](const auto& a, const auto& b) { return a.pairs.size() < b.pairs.size(); });
    return items;
  }

 private:
  /// The best example shows nothing but the change.
  struct Example {
    std::size_t pair;
    bool isPure;
  };

  void addExample(const PairRecord& pair, std::size_t number) {
    const Difference& difference = *pair.difference;
    const Example example = {number, difference.changes.size() == 1};
    for (const DiffHunk& hunk : difference.hunks) {
      for (const std::string& group : hunk.groups) {
        addExample(group, example);
      }
    }
    if (difference.hunkCount == 0) {  // its notes tell what has changed
      for (const DiffChange& change : difference.changes) {
        addExample(change.group, example);
      }
    }
  }

  void addExample(const std::string& group, const Example& example) {
    const auto [place, isNew] = m_exampleOf.try_emplace(group, example);
    if (!isNew && example.isPure && !place->second.isPure) {
      place->second = example;
    }
  }

  /// Pairs whose files differ in an unknown way have to be looked at one by one; those that cannot
  /// be accepted anyway go together if the reason is the same.
  void addOther(const PairRecord& pair, std::size_t number, bool isAcceptable) {
    const std::string reason = std::string(wordFor(pair.verdict)) + ": " + pair.message;
    std::string key = reason;
    if (isAcceptable) {
      key = pair.report + '\0' + pair.format + '\0' + pair.master;
    }
    const auto [found, isNew] = m_otherOf.try_emplace(key, m_others.size());
    if (isNew) {
      m_others.push_back({idOf(key), {}, printable(reason), {}, number, true});
    }
    m_others[found->second].pairs.push_back(number);
  }

  ChangeGroups m_groups;
  std::unordered_map<std::string, Example> m_exampleOf;  ///< by group
  std::vector<ReviewItem> m_others;
  std::unordered_map<std::string, std::size_t> m_otherOf;
};

ReviewMaterial::ReviewMaterial(RecordReader& record) : m_record(record) {
  Sorter sorter;
  std::uint64_t place = record.position();
  for (; auto pair = record.next(); place = record.position()) {
    m_uses.add(*pair);
    m_notRun += pair->verdict == Verdict::NotRun ? 1 : 0;
    if (isToReview(*pair)) {
      auto obstacle = whyNotAcceptable(*pair);
      sorter.add(*pair, m_pairs.size(), !obstacle);
      pair->difference.reset();
      m_pairs.push_back({std::move(*pair), std::move(obstacle), {}});
      m_places.push_back(place);
    }
  }
  m_items = sorter.rarestFirst();
  for (std::size_t item = 0; item < m_items.size(); ++item) {
    for (const std::size_t pair : m_items[item].pairs) {
      m_pairs[pair].items.push_back(item);
    }
  }
  for (ReviewPair& pair : m_pairs) {
    if (!pair.obstacle) {
      pair.obstacle = m_uses.conflictOf(pair.record);
    }
  }
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/record/PairRecord.h"

/// A change, and the pairs that show it.
struct ChangeGroup {
  std::string id;    ///< of the change: the same in every run
  std::string kind;  ///< of the difference: "text", "missing", ...
  std::string removed;
  std::string added;
  std::vector<std::size_t> pairs;  ///< numbers of the first ones, from 0, in the order of the run
  std::size_t pairCount = 0;       ///< of all that there are
  std::uint64_t places = 0;        ///< at which these pairs show it
  std::uint64_t pairsHash = 0;     ///< of all numbers: equal for groups of the same pairs
};

/// Groups as a JSON array. Put together by hand: nlohmann's arrays allocate in their destructors,
/// which ends the program when it lacks memory.
std::string toJson(const std::vector<ChangeGroup>& groups);

/// Gathers equal changes of different pairs.
class ChangeGroups {
 public:
  /// Names the first `mostPairs` of each group, and counts the others.
  explicit ChangeGroups(std::size_t mostPairs = std::numeric_limits<std::size_t>::max())
      : m_mostPairs(mostPairs) {}

  /// Call it for every pair, in the order of the run: numbers them. Returns how many changes no
  /// earlier pair has shown.
  std::size_t add(const PairRecord& pair);

  std::size_t size() const { return m_groups.size(); }

  /// The group of that id; null if no pair has shown it. Valid until the next pair is added.
  const ChangeGroup* find(const std::string& id) const;

  /// The groups, those of the fewest pairs first: a change seen once is the likeliest regression.
  /// Of equally many pairs, those come first whose change can be told in words, then those whose
  /// first pair does.
  std::vector<ChangeGroup> rarestFirst() const;

 private:
  const std::size_t m_mostPairs;
  std::vector<ChangeGroup> m_groups;  ///< in the order of their first pairs
  std::unordered_map<std::string, std::size_t> m_indexOf;
  std::size_t m_pairs = 0;
};

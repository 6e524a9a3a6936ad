#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/record/PairRecord.h"

/// A change, and all pairs that show it.
struct ChangeGroup {
  std::string id;  ///< of the change: the same in every run
  std::string removed;
  std::string added;
  std::vector<std::size_t> pairs;  ///< their numbers, from 0, in the order of the run
  std::uint64_t places = 0;        ///< at which these pairs show it
  bool hasWords = true;            ///< false for pictures and bytes, which have to be looked at
};

/// Groups as a JSON array. Put together by hand: nlohmann's arrays allocate in their destructors,
/// which ends the program when it lacks memory.
std::string toJson(const std::vector<ChangeGroup>& groups);

/// Gathers equal changes of different pairs.
class ChangeGroups {
 public:
  /// Call it for every pair, in the order of the run.
  void add(const PairRecord& pair);

  /// The groups, those of the fewest pairs first: a change seen once is the likeliest regression.
  /// Of equally many pairs, those come first whose change can be told in words, then those whose
  /// first pair does.
  std::vector<ChangeGroup> rarestFirst() const;

 private:
  std::vector<ChangeGroup> m_groups;  ///< in the order of their first pairs
  std::unordered_map<std::string, std::size_t> m_indexOf;
  std::size_t m_pairs = 0;
};

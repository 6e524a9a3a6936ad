#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/record/PairRecord.h"
#include "cli/report/ChangeGroups.h"

/// What there is to say of one or more pairs that did not pass: a change, or why there was no
/// comparison.
struct Topic {
  std::string headline;    ///< printable: "15.20 → 16.20", "missing: the master does not exist"
  std::size_t pairs = 0;   ///< it applies to
  std::string name;        ///< of the first of them, as the run knows it; empty: not kept
  std::string path;        ///< of its master, absolute; empty when it is not there
  std::uint64_t line = 0;  ///< of its master at which the change starts; 0: unknown
  std::string hunk;        ///< plain text of lines, escaped; may be empty
};

/// Gathers what the pairs of a run have to tell, for reports that have room for little. Changes are
/// the groups of the run; pairs without one go together if their verdict and message are equal.
class Topics {
 public:
  /// Call it for every pair, in the order of the run.
  void add(const PairRecord& pair);

  /// At most `most` topics, those of the fewest pairs first, but in any case the one of the most
  /// pairs, as the last: it is the news of the morning.
  std::vector<Topic> mostTelling(const std::vector<ChangeGroup>& groups, std::size_t most) const;

  /// All that there are, shown or not.
  std::size_t count(const std::vector<ChangeGroup>& groups) const;

 private:
  void addChanges(const PairRecord& pair);

  std::unordered_map<std::string, Topic> m_ofGroups;       ///< by id; of the first ones only
  std::vector<Topic> m_others;                             ///< in the order of their first pairs
  std::unordered_map<std::string, std::size_t> m_indexOf;  ///< of these, by headline
};

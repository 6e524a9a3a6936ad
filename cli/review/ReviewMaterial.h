#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/baseline/Acceptance.h"
#include "cli/record/PairRecord.h"
#include "cli/record/RecordReader.h"
#include "cli/report/ChangeGroups.h"

/// What is looked at and decided as one: changes that the very same pairs show, pairs that were not
/// compared for the same reason, or a pair that cannot be told in changes.
struct ReviewItem {
  std::string id;                    ///< the same in every run
  std::vector<ChangeGroup> changes;  ///< empty if it is not about changes
  std::string headline;              ///< printable; of what is not about changes
  std::vector<std::size_t> pairs;    ///< numbers of pairs to review
  std::size_t example = 0;           ///< one of them that can show a place of it
  bool hasPlace = false;             ///< whether the record keeps a place of it to show
};

/// A pair that did not pass.
struct ReviewPair {
  PairRecord record;                    ///< without its difference: `ReviewMaterial::read` has it
  std::optional<std::string> obstacle;  ///< why it cannot be accepted
  std::vector<std::size_t> items;       ///< that it belongs to, rarest first
};

/// What there is to review in a record, the rarest first: what is seen once is the likeliest
/// regression.
class ReviewMaterial {
 public:
  /// Reads all of the record, which must outlive the object. Raises `CommandError` if it is
  /// damaged.
  explicit ReviewMaterial(RecordReader& record);

  const std::vector<ReviewItem>& items() const { return m_items; }
  const std::vector<ReviewPair>& pairs() const { return m_pairs; }
  /// Pairs that the run did not come to: there is nothing to decide about them.
  std::size_t notRun() const { return m_notRun; }
  const MasterUses& uses() const { return m_uses; }
  const RecordReader& source() const { return m_record; }

  /// The pair with its difference.
  PairRecord read(std::size_t pair) const { return m_record.readAt(m_places[pair]); }

 private:
  class Sorter;

  const RecordReader& m_record;
  MasterUses m_uses;
  std::vector<ReviewPair> m_pairs;
  std::vector<std::uint64_t> m_places;  ///< of the pairs in the record
  std::vector<ReviewItem> m_items;
  std::size_t m_notRun = 0;
};

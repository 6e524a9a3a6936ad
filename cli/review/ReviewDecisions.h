#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/record/Decision.h"
#include "cli/review/ReviewMaterial.h"

/// What a person has decided about the pairs of a record. Kept in the record, in decisions.jsonl,
/// which is whole at any moment and up to date after every call.
///
/// A pair is accepted when each of its items is, so that nothing is that nobody has seen; it is a
/// fault as soon as one of its items is. What was decided about a pair by itself stands, whatever
/// is decided about its items later.
class ReviewDecisions {
 public:
  using Fix = Decision::Fix;

  /// Goes on from the decisions in the record, as far as they are about the same files. Raises
  /// `CommandError` if they cannot be read or kept, or if someone else reviews the record now.
  /// `material` must outlive the object.
  explicit ReviewDecisions(const ReviewMaterial& material);
  ~ReviewDecisions();
  ReviewDecisions(const ReviewDecisions&) = delete;
  ReviewDecisions& operator=(const ReviewDecisions&) = delete;

  /// The file that keeps them.
  const std::string& path() const { return m_path; }

  /// What is decided about a pair; nothing if it is open.
  std::optional<Fix> of(std::size_t pair) const;
  const std::string& noteOf(std::size_t pair) const { return m_pairs[pair].note; }
  bool hasAccepted(std::size_t pair, std::size_t item) const;

  /// Whether some pair of the item is open, and the item has not been accepted for it.
  bool isOpen(std::size_t item) const;

  /// All pairs with that decision; with none, all that are open.
  std::vector<std::size_t> pairsWith(std::optional<Fix> fix) const;

  void decideItem(std::size_t item, Fix fix, const std::string& note = {});
  void decidePair(std::size_t pair, std::size_t item, Fix fix, const std::string& note = {});

  /// Where a decision was made.
  struct Place {
    std::size_t item;
    std::optional<std::size_t> pair;  ///< nothing: about all of the item
  };
  /// Takes back the last decision of this session. Nothing if there is none.
  std::optional<Place> undo();

 private:
  struct State {
    std::optional<Fix> fix;
    std::string item;  ///< that decided it; empty: it was decided by itself
    std::string note;
    std::vector<std::string> accepted;  ///< items
  };
  struct Step {
    Place place;
    std::vector<std::pair<std::size_t, State>> former;
  };

  void load();
  void resume(std::size_t number, const Decision& decision);
  State decided(State state, std::size_t pair, const std::string& item, Fix fix,
                const std::string& note) const;
  bool acceptsAll(const State& state, std::size_t pair) const;
  void change(Place place, const std::vector<std::pair<std::size_t, State>>& changes);
  std::string lineOf(std::size_t pair) const;
  void save() const;

  const ReviewMaterial& m_material;
  const std::string m_path;
  int m_lock = -1;
  std::vector<State> m_pairs;
  std::vector<std::string> m_lines;   ///< of the pairs in the file; empty: none
  std::vector<std::string> m_others;  ///< lines about what is not to be reviewed here
  std::vector<Step> m_steps;
};

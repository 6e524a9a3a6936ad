#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "cli/review/ReviewDecisions.h"
#include "cli/review/ReviewMaterial.h"

/// Where in the material the person is: at an item, or at one of its pairs.
class ReviewWalk {
 public:
  struct Place {
    std::size_t item = 0;
    std::optional<std::size_t> index{};  ///< of the pair in the item
  };

  /// Starts at the first item. Both must outlive the walk; there must be an item.
  ReviewWalk(const ReviewMaterial& material, const ReviewDecisions& decisions)
      : m_material(material), m_decisions(decisions) {}

  const Place& place() const { return m_place; }
  const ReviewItem& item() const { return m_material.items()[m_place.item]; }
  bool isAtPair() const { return m_place.index.has_value(); }

  /// The number of the pair that is shown: of an item, its example.
  std::size_t pair() const;

  void goTo(const ReviewDecisions::Place& place);
  /// To the first pair of the item that is open, or the first of all.
  void enterPairs();
  void leavePairs() { m_place.index.reset(); }
  void goBack();

  /// These return false when there is nothing to go to. To the next pair or item:
  bool goOn();
  /// To what is next after a decision: the next pair, or the next open item, going round.
  bool advance();
  /// To the first open item, from here on.
  bool goToOpen();
  /// To the next place, going round, that has `text` in its change or the names of a pair, whatever
  /// the case of ASCII letters.
  bool find(const std::string& text);

 private:
  bool goToOpen(std::size_t first);

  const ReviewMaterial& m_material;
  const ReviewDecisions& m_decisions;
  Place m_place;
};

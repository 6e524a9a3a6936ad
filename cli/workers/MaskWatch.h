#pragma once

#include <string>
#include <vector>

#include "cli/diff/OutsizedMasks.h"
#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Watches one comparison for what its pass would rest on: the rules that change the texts, and
/// outsized masks. Stands before the observer there is, and passes everything on to it.
///
/// Most pairs of a run differ in something that rules mask, so the comparison itself is not made
/// slower: it counts what its patterns match. Only if that may be too much, the files are read
/// again and their masks are examined.
class MaskWatch : private OrvComparisonObserver {
 public:
  explicit MaskWatch(const MaskLimits& limits);
  ~MaskWatch() override;
  MaskWatch(const MaskWatch&) = delete;
  MaskWatch& operator=(const MaskWatch&) = delete;

  /// Adds the outsized mask to the record of a pair that has passed, if there is one.
  void addMaskTo(PairRecord& record, const OrvDiffFileEngine& engine) const;

  /// Names of the rules that changed one of the texts, or that files are equal by.
  const std::vector<std::string>& rules() const { return m_rules; }

 private:
  void sawEqualBlock(std::string_view block) override;
  void sawEqualFiles() override;
  void sawFiles(std::string_view master, std::string_view actual) override;
  void sawChangeBy(const OrvDiffNormalizationPattern* pattern) override;
  void sawNormalized(std::string_view master, std::string_view actual) override;
  std::size_t longestUsualMatch(std::size_t textLength) const override;
  void sawMatches(const MatchSizes& master, const MatchSizes& actual) override;
  void sawHelpOf(std::string_view name) override;

  bool isMuch(const MatchSizes& sizes) const;

  OrvComparisonObserver* const m_next;
  const MaskLimits m_limits;
  std::vector<std::string> m_rules;
  bool m_mayBeOutsized = false;
};

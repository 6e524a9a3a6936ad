#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "cli/baseline/MasterChange.h"
#include "cli/review/ReviewDecisions.h"
#include "cli/review/ReviewMaterial.h"
#include "cli/terminal/Terminal.h"

/// What a screen shows: safe to print, and no wider than it was asked for, but for names
/// of files and what an explanation says.
struct Page {
  std::string title;
  std::string state;  ///< in a few words, for the other end of the title's row
  std::vector<std::string> rows;
};

/// How hunks are shown.
enum class HunkView {
  Unified,
  SideBySide,
  Normalized  ///< as they were compared: nothing stands for what rules have masked
};

std::string_view wordFor(HunkView view);

/// Puts into words and rows what there is to decide. All arguments must outlive the object.
class ReviewPages {
 public:
  ReviewPages(const ReviewMaterial& material, const ReviewDecisions& decisions,
              const Palette& palette)
      : m_material(material), m_decisions(decisions), m_palette(palette) {}

  Page ofItem(std::size_t item, HunkView view, std::size_t width) const;
  /// `index` is that of the pair in the item.
  Page ofPair(std::size_t item, std::size_t index, HunkView view, std::size_t width) const;
  /// `check` says what would come of accepting the `pairs`.
  Page ofSummary(const std::vector<std::size_t>& pairs, const ChangeReport& check,
                 std::size_t width) const;

  /// What a decision has done, in a few words: to `pair`, or to the pairs of the item if that is
  /// empty.
  std::string ofDecision(Decision::Fix fix, std::size_t item, const std::string& pair) const;

 private:
  class Rows;

  std::string progress() const;
  void addChanges(const ReviewItem& item, Rows& rows) const;
  void addObstacles(const ReviewItem& item, Rows& rows) const;
  void addOtherItems(std::size_t item, Rows& rows) const;
  void addHunks(const Difference& difference, HunkView view, Rows& rows) const;
  void addPairs(std::size_t item, Rows& rows) const;
  void addDecided(Decision::Fix fix, const char* heading, Rows& rows) const;

  const ReviewMaterial& m_material;
  const ReviewDecisions& m_decisions;
  const Palette& m_palette;
};

/// A page of lines that are safe to print.
Page textPage(const std::string& title, const std::string& lines, std::size_t width);

/// What the keys do.
Page helpPage();

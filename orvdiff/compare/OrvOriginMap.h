#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/orvdiff_export.h"

/// Where a normalised text came from: the origin of each of its bytes, and what the patterns hid.
///
/// The verdict needs only the two normalised texts; a map is for those who explain it. Creating one
/// takes up to three times as long as `OrvDiffLib::cleanse` takes for one text, so create it when a
/// result is worth it, for example in a listener:
///
///     void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override {
///       const OrvOriginMap map(readFile(result.getActualName()), *engine.getCleansingPatterns());
///       const auto place = map.position(map.originOf(result.getDiffPosition()).begin);
///       std::cout << result.getActualName() << ':' << place.line << ':' << place.column << '\n';
///     }
///
/// (Keep what `readFile` returns in a variable: the map does not copy it.)
///
/// All offsets count bytes from 0; whether those are valid UTF-8 does not matter. A map is for one
/// thread at a time. The original and the patterns must outlive it; both are only read.
class ORVDIFF_API OrvOriginMap {
 public:
  /// The bytes from `begin` to `end` (one past the last) of the original text.
  struct Stretch {
    std::size_t begin;
    std::size_t end;
  };

  /// A step of the normalisation. The first removes carriage returns, the others apply the patterns
  /// in list order. A pattern that is in the list twice is two rules.
  struct Rule {
    const OrvDiffNormalizationPattern* pattern;  ///< null: removes carriage returns
    std::string name;                            ///< as `nameOf` gives it
    /// How many matches it replaced by something else, later rules' share included. Of carriage
    /// returns each run is one.
    std::size_t matches;
    std::size_t maskedBytes;  ///< bytes of the original in masks whose `rule` is this
  };

  /// A stretch of the original that stands changed in the normalised text, or not at all.
  ///
  /// Normally it is what one match replaced. Where a rule matched text that an earlier rule had
  /// written, or that came together only because an earlier rule had removed what stood between,
  /// it is all of these stretches as one, from the first byte of the first to the last byte of the
  /// last, with what was kept between them. `rule` is then the last rule that changed it.
  struct Mask {
    std::size_t begin;      ///< in the original
    std::size_t end;        ///< `begin` if something was only inserted
    std::size_t textBegin;  ///< in the normalised text: what stands there instead
    std::size_t textEnd;    ///< `textBegin` if it was removed
    std::size_t rule;       ///< index in `rules()`
    std::size_t history;    ///< for `rulesOf`
  };

  /// A place as editors show it, both counted from 1.
  struct Position {
    std::size_t line;    ///< lines end with a line feed
    std::size_t column;  ///< in characters; a byte that is not part of valid UTF-8 is one
  };

  /// Normalises `original`, which ends at its first NUL, if it has one. Raises what
  /// `OrvDiffLib::cleanse` raises.
  OrvOriginMap(std::string_view original, const OrvPatternList& patterns);
  ~OrvOriginMap();
  OrvOriginMap(OrvOriginMap&& other) noexcept;
  OrvOriginMap& operator=(OrvOriginMap&& other) noexcept;

  /// The original, up to its first NUL.
  std::string_view original() const;

  /// The normalised text: what `OrvDiffLib::cleanse` makes of the original, byte for byte. Ends
  /// with a NUL, which is not part of it.
  std::string_view text() const;

  /// Where the byte at `offset` of the normalised text came from: the one byte that was kept, or
  /// all of the mask if a rule wrote it. The end of the text comes from the end of the original.
  /// Raises `VELAssertError` if `offset` is beyond that. The time is logarithmic in the number of
  /// masks.
  Stretch originOf(std::size_t offset) const;

  /// What was masked, in order, in the original as in the normalised text; no two overlap. What
  /// lies between two masks is the same in both, so replacing each mask's stretch of the original
  /// by `replacement(mask)` gives the normalised text.
  const std::vector<Mask>& masks() const;

  /// What stands in the normalised text instead of the mask. Valid as long as the map.
  std::string_view replacement(const Mask& mask) const;

  /// Every step of the normalisation, also those that changed nothing.
  const std::vector<Rule>& rules() const;

  /// The rules that changed something in this mask, as ascending indices in `rules()`; the last is
  /// the mask's `rule`. Valid as long as the map.
  const std::vector<std::size_t>& rulesOf(const Mask& mask) const;

  /// The name of a rule: "CarriageReturn" for null, the name that the pattern was given, else its
  /// name in the catalogue or, if it has none, its expression.
  static std::string nameOf(const OrvDiffNormalizationPattern* pattern);

  /// Line and column of the byte at `offset` of the original, or of its end. Raises
  /// `VELAssertError` if `offset` is beyond that. The first call reads all of the original, every
  /// other one a few kilobytes at most.
  Position position(std::size_t offset) const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

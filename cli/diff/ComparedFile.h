#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvOriginMap.h"

/// One file of a pair of texts: the file as it is, the text that was compared, and the lines in
/// which the file is shown.
///
/// A line that is shown ends where a line of the file ends, unless that is inside of what a rule
/// masks: a script of a hundred lines is one mask on one line. A line too long for a screen is cut
/// at a tag or between words. Cuts depend on the text near them only, so equal stretches of two
/// files are cut alike.
class ComparedFile {
 public:
  using Mask = OrvOriginMap::Mask;

  /// `patterns`, unless null, are the rules by which the file was compared; a text ends at its
  /// first NUL then. Both arguments must outlive the object.
  ComparedFile(std::string_view bytes, const OrvPatternList* patterns);

  std::string_view original() const { return m_original; }
  std::string_view text() const { return m_text; }

  // Offsets: "place" in the original, "offset" in the text.

  /// Where the text's byte at `offset` comes from; the end of the file for the end of the text.
  std::size_t placeOf(std::size_t offset) const;
  /// Where what `offset` bytes of the text come from ends.
  std::size_t endPlaceOf(std::size_t offset) const;
  /// The offset of the first byte of the text that comes from `place` or behind it.
  std::size_t offsetOf(std::size_t place) const;

  /// The start of the shown line that holds `place`; `place` itself if a line starts there and it
  /// `mayStay`. Not for a place within a mask.
  std::size_t lineStart(std::size_t place, bool mayStay) const;
  /// The end of the shown line that holds `place`, or that ends there if it `mayStay`.
  std::size_t lineEnd(std::size_t place, bool mayStay) const;
  /// The end of the shown line that starts at `place`; of a long line, as much as a screen is wide.
  std::size_t pieceEnd(std::size_t place) const;
  /// Whether a line of the file starts here, not only what is left of one that was cut.
  bool startsLine(std::size_t place) const;

  /// Counted from 1.
  std::uint64_t lineNumber(std::size_t place) const;

  /// The first mask that ends behind `place`; it may begin behind it, too.
  std::vector<Mask>::const_iterator maskAfter(std::size_t place) const;
  std::vector<Mask>::const_iterator masksEnd() const { return masks().end(); }
  std::string_view ruleOf(const Mask& mask) const { return m_map->rules()[mask.rule].name; }
  std::string_view maskedText(const Mask& mask) const {
    return m_original.substr(mask.begin, mask.end - mask.begin);
  }

 private:
  enum class Cut { Nearest, AfterPiece };

  std::size_t findLineEnd(std::size_t place, bool mayStay, Cut where) const;
  const std::vector<Mask>& masks() const;
  bool endsLine(const Mask& mask) const;
  bool isCutBetweenWords(std::size_t place) const;

  std::unique_ptr<const OrvOriginMap> m_map;  ///< null: the text is the file
  std::string_view m_original;
  std::string_view m_text;
  mutable std::vector<std::uint64_t> m_linesBefore;  ///< for each block, once asked for
};

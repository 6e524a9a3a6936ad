#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/compare/pattern/Edit.h"

namespace orvdiff {

/// A text while a list of patterns is applied to it.
///
/// After each pattern the text is, byte for byte, what the pattern's own `normalizeText` would
/// leave. A pattern that runs without ICU needs no conversion, copies the text only if something
/// matched, and raises nothing, even on texts on which ICU's stack reaches its limit.
///
/// There are two buffers: the text, and a second one, allocated when a pattern first matches. A
/// pattern that matches writes its result into the second buffer, from the front and never longer
/// than the text; then the two swap roles. So a text goes through any number of patterns with one
/// allocation, and the cost of a pattern that matches nothing is its search. The second buffer is
/// as large as the text was when it was allocated; since texts only shrink, that stays enough.
/// ICU's patterns are the exception: they bring a buffer of their own, and may lengthen the text by
/// a character, so the second buffer is dropped after them.
class WorkingText {
 public:
  /// Works on the text in `buffer`, which must outlive this object and must not be touched
  /// meanwhile. After every operation, even one that raised, `buffer` holds the current text.
  explicit WorkingText(OrvTextBuffer& buffer);

  /// Whether none of these patterns can raise here on any text, short of running out of memory.
  static bool cannotFail(const OrvPatternList& patterns);

  std::size_t length() const { return m_length; }

  /// Has matches longer than this counted as long from now on; until then, none is.
  void setLongestUsualMatch(std::size_t length) { m_longestUsualMatch = length; }

  const OrvComparisonObserver::MatchSizes& matchSizes() const { return m_sizes; }

  // Both return whether they changed the text. (A match that is replaced by itself counts.)

  /// `edits`, unless null, gets what was changed; a run of carriage returns is one edit.
  bool removeCarriageReturns(pattern::Edits* edits = nullptr);

  /// Replaces every match of `pattern`. A pattern that needs ICU raises what `normalizeText`
  /// raises. `edits`, unless null, gets one edit for each match that was not replaced by itself.
  bool apply(const OrvDiffNormalizationPattern& pattern, pattern::Edits* edits = nullptr);

 private:
  /// Returns whether anything matched.
  bool run(const pattern::Substitution& substitution, pattern::Edits* edits);
  bool runIcu(const OrvDiffNormalizationPattern& pattern, pattern::Edits* edits);

  void countMatch(std::string_view match);

  OrvTextBuffer& m_text;
  std::size_t m_length;
  std::size_t m_longestUsualMatch = SIZE_MAX;
  OrvComparisonObserver::MatchSizes m_sizes;
  OrvTextBuffer m_scratch;  ///< the second buffer; null until a pattern matches
};

}  // namespace orvdiff

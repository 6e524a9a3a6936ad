#pragma once

#include <cstddef>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/compare/OrvTextBuffer.h"

/// A text while a whole list of patterns is applied to it.
///
/// The result after each step is, byte for byte, what the pattern's own `normalizeText` would
/// leave. A pattern that has a program needs no conversion of the text, copies it only where
/// something matched, and does not raise: also not on texts that ICU gives up on because its stack
/// reaches its limit.
class WorkingText {
 public:
  /// Works on the text in `buffer`, which must outlive this object and not be touched by others
  /// meanwhile. After every operation, also one that raised, `buffer` holds the text as it is then.
  explicit WorkingText(OrvTextBuffer& buffer);

  /// Whether no text can make one of these patterns raise here, short of running out of memory.
  static bool cannotFail(const OrvPatternList& patterns);

  void removeCarriageReturns();

  /// Replaces every match of `pattern`. One that is ICU's alone raises what `normalizeText` raises.
  void apply(const OrvDiffNormalizationPattern& pattern);

 private:
  void runProgram(const OrvDiffNormalizationPattern& pattern);

  OrvTextBuffer& m_text;
  std::size_t m_length;
  OrvTextBuffer m_scratch;  ///< as large as the text was at first; trades places with it
};

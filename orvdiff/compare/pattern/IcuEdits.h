#pragma once

#include <unicode/uregex.h>

#include <string_view>

#include "orvdiff/compare/pattern/Edit.h"

namespace orvdiff::pattern {

/// One `uregex_replaceAll` that has succeeded: on `text`, as UTF-16 and as the UTF-8 it came from,
/// with `result` as what came out, converted back.
struct IcuReplacement {
  URegularExpression* expression;
  std::u16string_view replacement;
  std::u16string_view text;
  std::string_view textBytes;
  std::string_view resultBytes;
};

/// The edits, in bytes, that turn the text into the result. Normally one for each match. In the
/// freak case that a match begins or ends inside a character, or that a replacement's last code
/// unit and the next one kept make a new character, bytes outside the matches change as well; then
/// it is one edit, from the first byte that changed to the last.
Edits findIcuEdits(const IcuReplacement& done);

}  // namespace orvdiff::pattern

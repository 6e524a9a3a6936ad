#include "orvdiff/compare/pattern/IcuEdits.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELAssert.h"

namespace orvdiff::pattern {
namespace {

/// How many bytes `I18NConverter` makes of these code units. A byte that was not valid UTF-8 is one
/// code unit, U+DC80 to U+DCFF; any other surrogate without its partner becomes U+FFFD.
std::size_t lengthInBytes(std::u16string_view units) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    if (unit < 0x80 || (unit >= 0xDC80 && unit <= 0xDCFF)) {
      bytes += 1;
    } else if (unit < 0x800) {
      bytes += 2;
    } else if (U16_IS_LEAD(unit) && i + 1 < units.size() && U16_IS_TRAIL(units[i + 1])) {
      bytes += 4;
      ++i;
    } else {
      bytes += 3;
    }
  }
  return bytes;
}

/// `view.substr` that never raises: what lies beyond the end is empty.
template <typename View>
View slice(View view, std::size_t begin, std::size_t length) {
  return begin < view.size() ? view.substr(begin, length) : View();
}

/// Repeats the replacements, match by match, to learn where they stand.
class Repetition {
 public:
  explicit Repetition(const IcuReplacement& done)
      : m_done(done), m_output(done.text.size() + 2), m_free(m_output.data()) {}

  /// False if the result is not what was kept, byte for byte, with the replacements in between.
  bool run(Edits& edits) {
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(m_done.expression, m_done.text.data(), static_cast<int>(m_done.text.size()),
                   &status);
    while (uregex_findNext(m_done.expression, &status) != 0) {
      const std::size_t begin = offset(uregex_start(m_done.expression, 0, &status));
      const std::size_t end = offset(uregex_end(m_done.expression, 0, &status));
      const std::size_t length = lengthInBytes(nextReplacement(begin, status));
      if (U_FAILURE(status) || !pass(begin)) {
        break;
      }
      const std::size_t matched = lengthInBytes(m_done.text.substr(begin, end - begin));
      if (slice(m_done.textBytes, m_textBytes, matched) !=
          slice(m_done.resultBytes, m_resultBytes, length)) {
        edits.push_back({m_textBytes, m_textBytes + matched, length});
      }
      m_text = end;
      m_textBytes += matched;
      m_resultBytes += length;
    }
    velCheckIcuMemory(status, VEL_HERE);
    return U_SUCCESS(status) && pass(m_done.text.size()) &&
           m_textBytes == m_done.textBytes.size() && m_resultBytes == m_done.resultBytes.size();
  }

 private:
  static std::size_t offset(int32_t icuOffset) { return static_cast<std::size_t>(icuOffset); }

  /// ICU appends the text up to the match, too; there is room, as all of it has fitted before.
  std::u16string_view nextReplacement(std::size_t begin, UErrorCode& status) {
    const std::u16string_view& replacement = m_done.replacement;
    auto room = static_cast<int32_t>(m_output.data() + m_output.size() - m_free);
    const char16_t* const written = m_free;
    const int32_t count =
        uregex_appendReplacement(m_done.expression, replacement.data(),
                                 static_cast<int>(replacement.size()), &m_free, &room, &status);
    return slice(std::u16string_view(written, offset(count)), begin - m_text, offset(count));
  }

  /// Passes over the text up to `end`; false if it was not kept in the result.
  bool pass(std::size_t end) {
    const std::size_t length = lengthInBytes(m_done.text.substr(m_text, end - m_text));
    if (slice(m_done.resultBytes, m_resultBytes, length) !=
        slice(m_done.textBytes, m_textBytes, length)) {
      return false;
    }
    m_text = end;
    m_textBytes += length;
    m_resultBytes += length;
    return true;
  }

  const IcuReplacement& m_done;
  std::vector<char16_t> m_output;
  char16_t* m_free;               ///< where ICU writes next
  std::size_t m_text = 0;         ///< how far the text was passed over, in code units
  std::size_t m_textBytes = 0;    ///< the same in bytes
  std::size_t m_resultBytes = 0;  ///< how far the result was
};

/// The shortest single edit that turns `text` into `result`.
Edit wholeChange(std::string_view text, std::string_view result) {
  const auto firsts = std::mismatch(text.begin(), text.end(), result.begin(), result.end());
  const auto begin = static_cast<std::size_t>(firsts.first - text.begin());
  std::size_t end = text.size();
  std::size_t resultEnd = result.size();
  while (end > begin && resultEnd > begin && text[end - 1] == result[resultEnd - 1]) {
    --end;
    --resultEnd;
  }
  return {begin, end, resultEnd - begin};
}

}  // namespace

Edits findIcuEdits(const IcuReplacement& done) {
  Edits edits;
  if (done.textBytes != done.resultBytes && !Repetition(done).run(edits)) {
    edits = {wholeChange(done.textBytes, done.resultBytes)};
  }
  return edits;
}

}  // namespace orvdiff::pattern

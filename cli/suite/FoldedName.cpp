#include "cli/suite/FoldedName.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>

#include <algorithm>

namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string asciiFolded(std::string_view text) {
  std::string folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return folded;
}

}  // namespace

std::string foldedName(std::string_view name) {
  if (isAscii(name)) {
    return asciiFolded(name);
  }
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* const folding = icu::Normalizer2::getNFKCCasefoldInstance(error);
  std::string folded;
  if (U_SUCCESS(error)) {
    icu::StringByteSink<std::string> sink(&folded);
    folding->normalizeUTF8(0, icu::StringPiece(name.data(), static_cast<int32_t>(name.size())),
                           sink, nullptr, error);
  }
  return U_SUCCESS(error) ? folded : asciiFolded(name);
}

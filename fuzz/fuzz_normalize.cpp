#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>

#include "orvdiff/platform/VELErrors.h"
#include "tests/support/OriginMapCheck.h"
#include "tests/support/PatternPieces.h"
#include "tests/support/PlainNormalizer.h"

namespace {

/// A byte that is the number of a piece stands for that piece, so that the fuzzer does not have to
/// find the patterns' long literals letter by letter. Any other byte stands for itself.
std::string textOf(const std::uint8_t* data, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] < std::size(kPieces)) {
      text += kPieces[data[i]];
    } else {
      text += static_cast<char>(data[i]);
    }
  }
  return text;
}

}  // namespace

/// The first byte selects a pattern list; the rest is a text. The library must agree with ICU,
/// unless ICU reaches its stack limit: then there is nothing to compare with. The origin map, which
/// gets the text with any NUL in it, must lead to the same text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<NamedPatterns> lists = patternListsToTry();
  if (size == 0) {
    return 0;
  }
  const OrvPatternList& patterns = lists[data[0] % lists.size()].patterns.list();
  const std::string text = textOf(data + 1, size - 1);
  std::string plain;
  try {
    plain = normalizePlainly(text.c_str(), patterns);
  } catch (const VELAssertError&) {
    return 0;
  }
  if (plain != normalize(text.c_str(), patterns)) {
    std::cerr << "the library differs from ICU\n";
    std::abort();
  }
  const std::string fault = findOriginMapFault(OrvOriginMap(text, patterns), plain);
  if (!fault.empty()) {
    std::cerr << "origin map: " << fault << '\n';
    std::abort();
  }
  return 0;
}

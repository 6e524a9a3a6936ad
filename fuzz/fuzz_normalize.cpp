#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "orvdiff/platform/VELErrors.h"
#include "tests/support/PlainNormalizer.h"

/// The first byte selects a pattern list; the rest is a text. The shared path and the plain one
/// must agree. Where ICU gives up on its stack limit there is nothing to compare with.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<OrvPatternList> lists = patternListsToTry();
  if (size == 0) {
    return 0;
  }
  const OrvPatternList& patterns = lists[data[0] % lists.size()];
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::string plain;
  try {
    plain = normalizePlainly(text.c_str(), patterns);
  } catch (const VELAssertError&) {
    return 0;
  }
  if (plain != normalize(text.c_str(), patterns)) {
    std::cerr << "the shared path differs from ICU\n";
    std::abort();
  }
  return 0;
}

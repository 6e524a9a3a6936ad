#include "orvdiff/compare/pattern/FindLiteral.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The search takes many bytes at a time and then a remainder, so every length and position counts.
TEST(FindLiteral, FindsWhatThePlainSearchFinds) {
  constexpr std::size_t kLongest = 200;
  // Each literal with a text of near misses: its first and last byte fit, or all bytes but one.
  const std::pair<std::string, std::string> kLiterals[] = {
      {"<script", "<scrapt<skript"}, {"on", "no n oo nn"}, {"\xC3\xA4=\"", "\xC3\xB6=\"\xC3\""}};
  for (const auto& [literal, nearMisses] : kLiterals) {
    std::string filler;
    while (filler.size() < kLongest) {
      filler += nearMisses;
    }
    for (std::size_t position = 0; position < kLongest; ++position) {
      std::string text = filler.substr(0, kLongest);
      text.replace(position, literal.size(), literal);
      std::string bytes(kLongest, '.');
      bytes[position] = position % 2 == 0 ? '\n' : '\r';
      for (const std::size_t length :
           {position, position + literal.size() - 1, position + literal.size(),
            position + literal.size() + 1, kLongest}) {
        const std::string_view part = std::string_view(text).substr(0, length);
        for (const std::size_t from : {std::size_t{0}, position, position + 1, length}) {
          ASSERT_EQ(orvdiff::pattern::findLiteral(part, literal, from), part.find(literal, from))
              << literal << " at " << position << " of " << length << ", from " << from;
          ASSERT_EQ(orvdiff::pattern::findEither(bytes, '\n', '\r', from),
                    bytes.find_first_of("\r\n", from))
              << "either at " << position << ", from " << from;
        }
      }
    }
  }
}

}  // namespace

#include "orvdiff/compare/pattern/FindLiteral.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Texts are searched many bytes at a time with a remainder, so every length and every place counts.
constexpr std::size_t kLongestText = 200;

TEST(FindLiteral, FindsWhatThePlainSearchFinds) {
  // Each literal with a text of near misses: its first and last byte fit, or the whole but one.
  const std::pair<std::string, std::string> kLiterals[] = {
      {"<script", "<scrapt<skript"}, {"on", "no n oo nn"}, {"\xC3\xA4=\"", "\xC3\xB6=\"\xC3\""}};
  for (const auto& [literal, nearMisses] : kLiterals) {
    std::string filler;
    while (filler.size() < kLongestText) {
      filler += nearMisses;
    }
    for (std::size_t place = 0; place < kLongestText; ++place) {
      std::string text = filler.substr(0, kLongestText);
      text.replace(place, literal.size(), literal);
      for (const std::size_t length : {place, place + literal.size() - 1, place + literal.size(),
                                       place + literal.size() + 1, kLongestText}) {
        const std::string_view part = std::string_view(text).substr(0, length);
        for (const std::size_t from : {std::size_t{0}, place, place + 1, length}) {
          ASSERT_EQ(part.find(literal, from), orvdiff::pattern::findLiteral(part, literal, from))
              << literal << " at " << place << " of " << length << ", from " << from;
        }
      }
    }
  }
}

TEST(FindLiteral, FindsTheFirstOfTwoBytes) {
  for (std::size_t place = 0; place < kLongestText; ++place) {
    std::string text(kLongestText, '.');
    text[place] = place % 2 == 0 ? '\n' : '\r';
    for (const std::size_t from : {std::size_t{0}, place, place + 1}) {
      ASSERT_EQ(text.find_first_of("\r\n", from), orvdiff::pattern::findEither(text, '\n', '\r', from))
          << "at " << place << " from " << from;
    }
  }
}

}  // namespace

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "orvdiff/compare/WorkingText.h"
#include "tests/support/OriginMapCheck.h"
#include "tests/support/PatternPieces.h"
#include "tests/support/PlainNormalizer.h"

namespace {

/// A text of few different pieces, so that whole matches come about by chance; every other text
/// uses pieces that are neighbours in the table, which belong together.
std::string generateText(std::mt19937& random, bool neighbours) {
  const auto below = [&random](std::size_t count) { return random() % count; };
  const std::size_t around = below(std::size(kPieces));
  std::vector<std::size_t> chosen(2 + below(11));
  for (std::size_t& piece : chosen) {
    piece = neighbours && below(6) != 0 ? around + below(6) : below(std::size(kPieces));
  }
  std::string text;
  for (std::size_t i = below(41); i > 0; --i) {
    text += kPieces[chosen[below(chosen.size())] % std::size(kPieces)];
  }
  return text;
}

TEST(NormalizationDifferential, SharedPathEqualsIcuOnGeneratedTexts) {
  std::mt19937 random(20261122);
  const std::vector<NamedPatterns> lists = patternListsToTry();
  for (int round = 0; round < 3000; ++round) {
    const std::string text = generateText(random, round % 2 != 0);
    for (const auto& [name, patterns] : lists) {
      const std::string normalized = normalize(text, patterns.list());
      ASSERT_EQ(normalizePlainly(text, patterns.list()), normalized) << name << ", text:\n" << text;
      ASSERT_EQ(findOriginMapFault(OrvOriginMap(text, patterns.list()), normalized), "")
          << name << ", text:\n"
          << text;
    }
  }
}

TEST(NormalizationDifferential, NoCatalogueRowNeedsIcu) {
  for (const auto& [name, patterns] : catalogueRows()) {
    EXPECT_TRUE(orvdiff::WorkingText::cannotFail(patterns.list())) << name;
  }
}

TEST(NormalizationDifferential, WhatIsNotKnownForCertainIsLeftToIcu) {
  const std::string branches = "a?a?a?a?a?a?a?a?(a|a?a?a?a?a?a?a?)b";
  // clang-format off
  const std::pair<std::string, bool> kExpressions[] = {
      {branches, true}, {branches + "a?", false}, {"x(a|b)*b", true}, {"x(a|aa)*b", false},
      {"x(a*)*b", false}, {"x(aa*)*b", false}, {"x([ab]c)*", false}, {"x(a|b)+", false},
      {"x(|a)", true}, {"(|a)", false}, {"[a-c-]", true}, {"[a-c-e]", false}, {"[:a]", false},
      {"[a&b]", false}, {"(?s)a.*b", true}, {"(?s)a.*\n", false}, {"a.*\n", true},
      {"(?s)(?i)a", false}, {"a{2}", false}, {"a+?", false}, {"\\d", false}, {"\\x7F", false}};
  // clang-format on
  for (const auto& [expression, isOurs] : kExpressions) {
    const OrvDiffNormalizationPattern pattern(expression.c_str(), nullptr);
    EXPECT_EQ(orvdiff::WorkingText::cannotFail({&pattern}), isOurs) << expression;
  }
}

}  // namespace

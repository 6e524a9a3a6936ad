#include <gtest/gtest.h>

#include <random>
#include <string>

#include "orvdiff/compare/WorkingText.h"
#include "tests/support/PatternPieces.h"
#include "tests/support/PlainNormalizer.h"

namespace {

std::string generateText(std::mt19937& random) {
  std::uniform_int_distribution<std::size_t> anyPiece(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<std::size_t> narrowness(2, 12);
  std::uniform_int_distribution<int> pieceCount(0, 40);
  // Few different pieces in one text, so that whole matches come about by chance.
  std::vector<std::size_t> chosen(narrowness(random));
  for (std::size_t& piece : chosen) {
    piece = anyPiece(random);
  }
  std::uniform_int_distribution<std::size_t> anyChosen(0, chosen.size() - 1);
  std::string text;
  for (int i = pieceCount(random); i > 0; --i) {
    text += kPieces[chosen[anyChosen(random)]];
  }
  return text;
}

/// A text around one pattern: mostly pieces that stand next to each other in the list above, which
/// belong together.
std::string generateRelatedText(std::mt19937& random) {
  std::uniform_int_distribution<std::size_t> anyPiece(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<std::size_t> near(0, 5);
  const std::size_t around = anyPiece(random);
  std::string text;
  for (int i = 0; i < 30; ++i) {
    const std::size_t piece = near(random) == 0 ? anyPiece(random) : around + near(random);
    text += kPieces[piece % std::size(kPieces)];
  }
  return text;
}

TEST(NormalizationDifferential, SharedPathEqualsIcuOnGeneratedTexts) {
  std::mt19937 random(20261122);
  const std::vector<OrvPatternList> lists = patternListsToTry();
  for (int round = 0; round < 3000; ++round) {
    const std::string text = round % 2 == 0 ? generateText(random) : generateRelatedText(random);
    for (std::size_t list = 0; list < lists.size(); ++list) {
      ASSERT_EQ(normalizePlainly(text, lists[list]), normalize(text, lists[list]))
          << "list " << list << ", text:\n"
          << text;
    }
  }
}

TEST(NormalizationDifferential, NoCatalogueRowNeedsIcu) {
  for (int index = 0; index < kCatalogueRows; ++index) {
    EXPECT_TRUE(orvdiff::WorkingText::cannotFail(rows({index}))) << "row " << index;
  }
}

TEST(NormalizationDifferential, WhatIsNotKnownForCertainIsLeftToIcu) {
  const std::string manyBranches = "a?a?a?a?a?a?a?a?(a|a?a?a?a?a?a?a?)b";
  const std::pair<std::string, bool> kExpressions[] = {
      {manyBranches, true}, {manyBranches + "a?", false},
      {"x(a|b)*b", true},   {"x(a|aa)*b", false},
      {"x(a*)*b", false},   {"x(aa*)*b", false},
      {"x([ab]c)*", false}, {"x(a|b)+", false},
      {"x(|a)", true},      {"(|a)", false},
      {"[a-c-]", true},     {"[a-c-e]", false},
      {"[:a]", false},      {"[a&b]", false},
      {"(?s)a.*b", true},   {"(?s)a.*\n", false},
      {"a.*\n", true},      {"(?s)(?i)a", false},
      {"a{2}", false},      {"a+?", false},
      {"\\d", false},       {"\\x7F", false},
  };
  for (const auto& [expression, isOurs] : kExpressions) {
    const OrvDiffNormalizationPattern pattern(expression.c_str(), nullptr);
    EXPECT_EQ(orvdiff::WorkingText::cannotFail({&pattern}), isOurs) << expression;
  }
}

}  // namespace

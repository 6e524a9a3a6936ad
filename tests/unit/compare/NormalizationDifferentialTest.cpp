#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "orvdiff/compare/WorkingText.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "tests/support/PlainNormalizer.h"

namespace {

/// What generated texts are made of: everything a pattern starts with, contains or stops at, and
/// what is easily taken for it.
const std::string_view kPieces[] = {
    "<script",
    ">",
    "</script>",
    "name=\"chart",
    "\"",
    "name=\"next",
    "\" id=\"next",
    "id=\"next",
    "<meta name=\"Copyright\"",
    "<meta name=\"GeneratorID\"",
    "<meta name=\"Trademark\"",
    "<meta http-equiv=\"X-UA-Compatible\"",
    "onclick=\"",
    "onload=\"",
    "oncontextmenu=\"",
    "on",
    "<img src=",
    "v1/",
    " ctx=\"",
    "0:1",
    " name=\"",
    "a_Z9",
    " id=\"PRMT_",
    " for=\"",
    "[x]",
    " aria-labelledby=\"",
    "aria-labelledby=\"_THIS_hdr",
    "_THIS_hdr7",
    " _THIS_hdr12",
    " _THIS_",
    "hiddenspan",
    "hiddenspan3",
    " id=\"",
    " ",
    "   ",
    "chart_tmp_",
    "42",
    "c",
    ".removeReference",
    "coords=\"",
    "<coord>",
    "</coord>",
    "<label for=\"",
    "\">",
    "=3D",
    "=3",
    "=",
    "/bin/",
    "\\bind/",
    "<x:Data>",
    "</x:Data>",
    "-",
    "+",
    ".",
    "1",
    "e",
    "E+",
    "1e-5",
    "<filename>",
    "</filename>",
    "<area",
    "</area>",
    "Content-Type: image/png",
    "\n",
    "\r",
    "\r\n",
    "width:",
    "px",
    ";",
    "getAxisValueAsString",
    "title=\"",
    "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13.",
    "/",
    "x",
    "<",
    "A",
    "_",
    "\t",
    "\v",
    "\f",
    "\xC2\x85",
    "\xE2\x80\xA8",
    "\xE2\x80\xA9",
    "\xC2\xA0",
    "\xE3\x80\x80",
    "\xC3\xA9",
    "\xCE\xA9",
    "\xD9\xA3",
    "\xCC\x81",
    "\xE2\x80\x8D",
    "\xC2\xAD",
    "\xF0\x9D\x84\x9E",
    "\xEF\xBC\xBF",
    "\x85",
    "\xC2",
    "\xE2\x80",
    "\xED\xA0\x80",
    "\xFF",
    "\xF0\x9F",
    "\xA8",
};

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
    EXPECT_TRUE(WorkingText::cannotFail(rows({index}))) << "row " << index;
  }
}

}  // namespace

#include "orvdiff/compare/OrvOriginMap.h"

#include <list>

#include "tests/support/PlainNormalizer.h"
#include "tests/support/Testing.h"

namespace {

/// The masks as "[begin,end)=replacement" with the numbers of their rules.
std::string masksOf(const OrvOriginMap& map) {
  std::string text;
  for (const OrvOriginMap::Mask& mask : map.masks()) {
    text += text.empty() ? "[" : " [";
    text += std::to_string(mask.begin) + "," + std::to_string(mask.end) + ")=";
    text += map.replacement(mask);
    for (const std::size_t rule : map.rulesOf(mask)) {
      text += "'" + std::to_string(rule);
    }
  }
  return text;
}

struct Row {
  std::string text;
  std::vector<std::pair<const char*, const char*>> patterns;
  std::string masks;
};

TEST(OriginMap, MasksAreComposedThroughChainsOfPatterns) {
  // clang-format off
  const Row rows[] = {
      {"", {{"a", nullptr}}, ""},
      {"abc", {{"x", nullptr}}, ""},
      {"\r\ra\r\nb\r", {}, "[0,2)='0 [3,4)='0 [6,7)='0"},
      {"ab\0ab", {{"b", nullptr}}, "[1,2)='1"},
      {"xaxbx", {{"a", nullptr}, {"b", "-"}}, "[1,2)='1 [3,4)=-'2"},
      // Across the place where something was removed, but not beside it.
      {"<s>a<b>c", {{"<b>", nullptr}, {"ac", "-"}}, "[3,8)=-'1'2"},
      {"<s>a<b>c", {{"<b>", nullptr}, {"a", "-"}}, "[3,4)=-'2 [4,7)='1"},
      {"<s>a<b>c", {{"<b>", nullptr}, {"c", "-"}}, "[4,7)='1 [7,8)=-'2"},
      {"a\rb\rc", {{"b", nullptr}, {"ac", nullptr}}, "[0,5)='0'1'2"},
      // Text that an earlier pattern wrote: eaten whole, in part, in several parts, or in turn.
      {"1=3D2", {{"=3D", "="}, {"=2", nullptr}}, "[1,5)='1'2"},
      {"xaby", {{"ab", "cd"}, {"xc", nullptr}}, "[0,3)=d'1'2"},
      {"xaby", {{"ab", "cd"}, {"dy", "e"}}, "[1,4)=ce'1'2"},
      {"abab", {{"ab", "xy"}, {"yx", "-"}}, "[0,4)=x-y'1'2"},
      {"zabcdz", {{"abcd", "xyxy"}, {"y", nullptr}}, "[1,5)=xx'1'2"},
      {"abcde", {{"b", "x"}, {"d", "y"}, {"x", nullptr}, {"acy", "-"}}, "[0,4)=-'1'2'3'4"},
      // A group is masks and edits in turn.
      {"abcd", {{"ab", "12"}, {"cd", "34"}, {"23|[14]", "-"}}, "[0,4)=---'1'2'3"},
      // Insertions: beside a removed stretch, inside text that was written, at both ends.
      {"ab", {{"b", nullptr}, {"$", "-"}}, "[1,2)='1 [2,2)=-'2"},
      {"ab", {{"ab", "cd"}, {"(?=d)", "-"}}, "[0,2)=c-d'1'2"},
      {"ab", {{"^", "-"}, {"(?=a)", "+"}}, "[0,0)=-'1 [0,0)=+'2"},
      // What is replaced by itself is not masked.
      {"aba", {{"a", "a"}, {"(a)", "$1"}, {"b", "b"}}, ""},
      // ICU's patterns, and characters that are of other lengths in UTF-16.
      {"\xC3\xA9\xF0\x9F\x98\x80" "a\xFF\xE2\x82\xAC" "a", {{"a(?=\\uDCFF|$)", "\xC3\xA9"}},
       "[6,7)=\xC3\xA9'1 [11,12)=\xC3\xA9'1"},
      {"a\xFF" "b", {{"\\p{L}(?!a)", "$0"}, {"\\uDCFF", nullptr}}, "[1,2)='2"},
      // A replacement's last code unit and an escaped byte become one character, F0 90 82 80.
      {"xa\x80y", {{"a", "\\uD800"}}, "[1,2)=\xF0\x90\x82'1"},
      {"abc", {{"b", "\\u0000"}}, "[1,3)='1"},
  };
  // clang-format on
  for (const Row& row : rows) {
    std::list<OrvDiffNormalizationPattern> patterns;
    OrvPatternList list;
    for (const auto& [expression, replacement] : row.patterns) {
      list.push_back(&patterns.emplace_back(expression, replacement));
    }
    EXPECT_EQ(masksOf(OrvOriginMap(row.text, list)), row.masks) << row.text;
  }
}

TEST(OriginMap, RulesAreCountedAndNamed) {
  using Catalogue = OrvDiffNormalizationPatterns;
  const OrvDiffNormalizationPattern own("b+", "-");
  const std::string text = "<script>\r\n</script>abb\r\nb";
  const OrvOriginMap map(text, {Catalogue::getPattern(Catalogue::eScriptElement), &own,
                                Catalogue::getPattern(Catalogue::eNameAttribute)});
  std::string rules;
  for (const OrvOriginMap::Rule& rule : map.rules()) {
    rules += rule.name + ' ' + std::to_string(rule.matches) + ' ' +
             std::to_string(rule.maskedBytes) + '\n';
  }
  EXPECT_EQ(rules, "CarriageReturn 2 1\nScriptElement 1 19\nb+ 2 3\nNameAttribute 0 0\n");
}

TEST(OriginMap, FailsAsCleanseDoes) {
  const OrvDiffNormalizationPattern longer("a", "bcde");
  EXPECT_THROW(OrvOriginMap("a", {&longer}), VELAssertError);
  EXPECT_THROW(OrvOriginMap("a", {nullptr}), VELAssertError);
  EXPECT_THROW(OrvOriginMap("a", {}).originOf(2), VELAssertError);
  EXPECT_THROW(OrvOriginMap("a", {}).position(2), VELAssertError);
}

TEST(OriginMap, ColumnsCountCharacters) {
  std::string text = "a\r\n\xC3\xA9\xFFx\n\n";
  const std::size_t longLine = text.size();
  for (int i = 0; i < 5000; ++i) {
    text += "\xE2\x82\xAC";
  }
  const OrvOriginMap map(text, {});
  const std::size_t kPlaces[][3] = {{0, 1, 1},
                                    {2, 1, 3},
                                    {3, 2, 1},
                                    {4, 2, 1},
                                    {5, 2, 2},
                                    {6, 2, 3},
                                    {8, 3, 1},
                                    {9, 4, 1},
                                    {longLine + 14997, 4, 5000},
                                    {longLine + 8193, 4, 2732},
                                    {longLine + 8192, 4, 2731},
                                    {text.size(), 4, 5001}};
  for (const auto& [offset, line, column] : kPlaces) {
    const OrvOriginMap::Position position = map.position(offset);
    EXPECT_EQ(std::make_pair(position.line, position.column), std::make_pair(line, column))
        << offset;
  }
}

}  // namespace

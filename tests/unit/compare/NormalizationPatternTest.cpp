#include <algorithm>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "tests/support/Testing.h"

namespace {

const std::string kFailed =
    "OrvDiffNormalizationPattern: VEL_ASSERT_NAMED(U_SUCCESS( status ), \"Replacement using "
    "regular expression failed.\");";

/// What `normalizeText` makes of a text, or the error that it raises, which must leave the text
/// unchanged. Checks that `cleanse` agrees; it removes carriage returns first, so a pattern before
/// this one brings them back.
std::string normalized(const OrvDiffNormalizationPattern& pattern, const std::string& text) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  const std::string error = raisedBy([&] { pattern.normalizeText(buffer); });
  std::string withoutReturns = text;
  std::replace(withoutReturns.begin(), withoutReturns.end(), '\r', '\x01');
  const OrvDiffNormalizationPattern bringReturnsBack("\x01", "\r");
  OrvTextBuffer listed = OrvDiffLib::strdupnew(withoutReturns.c_str());
  OrvTextBuffer empty = OrvDiffLib::strdupnew("");
  EXPECT_EQ(raisedBy([&] {
              OrvDiffLib::cleanse(listed, empty, {&bringReturnsBack, &pattern});
            }),
            error);
  EXPECT_STREQ(listed.get(), buffer.get());
  if (error != "nothing") {
    EXPECT_EQ(buffer.get(), text);
    return error;
  }
  return buffer.get();
}

// clang-format off
TEST(NormalizationPattern, ReplacesEveryMatchWithinTheTextsLengthPlusOne) {
  const std::string kSmile = "\xF0\x9F\x98\x80";  // two code units in UTF-16
  const std::tuple<const char*, std::string, std::string, std::string> kRows[] = {
      {"=3D", "=", "a=3Db=3D", "a=b="}, {"b+", "", "abbbcb", "ac"},
      {"x", "y", "no match \xC3\xA9\xE9", "no match \xC3\xA9\xE9"},
      {"(a)(b)", "$2$1", "abab", "baba"}, {"(ab)c", "$1", "abc", "ab"}, {"ab", "\\$", "ab", "$"},
      {".+", "\xC3\xA9", "abc\xE9\nd", "\xC3\xA9\n\xC3\xA9"},
      {"a.c", "-", "abc a\nc a\xC3\xA9" "c a\xF0\x9F\x98\x80" "c a\xE9" "c", "- a\nc - - -"},
      {"^b", "", "b\nb", "\nb"}, {"[!--a]", "", "!\"-a", "\"-a"}, {"[-+--.]", "", "-+,.", ",."},
      {"[a-z--x]", "", "ax-z", "x-"}, {"[+-z--x]", "", ",-x", "x"},
      {"[a-z&&b-y]", "", "a&bz", "a&z"}, {"[a[b]]", "", "[ab]]", "[]]"},
      {"[:digit:]", "", "dig1:", "dig:"}, {"[a-]c", "", "-cac-", "-"},
      {"[a\x7F]b", "", "\x7F" "bab\x7F", "\x7F"}, {"[~-\x7F]+", "", "}~\x7F\xC2\x80", "}\xC2\x80"},
      {"(?s)a.*?\nb", "", "a\r\nb a\nb", ""}, {"(?s)a.*\n", "", "ab\r\n", "ab\r\n"},
      {"(?s)a.*?b", "", "ca\r\nbc", "cc"},
      {"(a|b)*c", "", "bacb", "b"}, {"ab?", "", "ca", "c"}, {"aa[0-9]", "", "aaa1", "a"},
      {"-\\s", "", "- -\xC2\xA0-\xE3\x80\x80-x", "-x"}, {"-\\b", "", "-\xCC\x81 -a", "-\xCC\x81 a"},
      {"a", "bc", "xax", "xbcx"}, {"a", "bcd", "xax", kFailed}, {"a", "bc", "aXa", kFailed},
      {"a(X?)", "bc", "aXa", "bcbc"}, {"(abc|b)", "xy", "b", "xy"}, {"(abc|b)", "xy", "bab", kFailed},
      {"\\u00E9", "bc", "\xC3\xA9", "bc"}, {"\\u00E9", "bcd", "\xC3\xA9", kFailed},
      {"a", kSmile, "\xE9" "a", "\xE9" + kSmile}, {"a", kSmile + "b", "\xE9" "a", kFailed},
      {"\\U0001F600", "bcd", kSmile, "bcd"}, {"\\U0001F600", "bcde", kSmile, kFailed},
  };
  // clang-format on
  for (const auto& [expression, replacement, text, expected] : kRows) {
    OrvDiffNormalizationPattern pattern(expression, "replaced before it is used");
    pattern.setReplacementText(replacement.c_str());
    EXPECT_EQ(normalized(pattern, text), expected) << expression << " " << replacement;
    pattern.setReplacementText(replacement.empty() ? nullptr : replacement.c_str());
    EXPECT_EQ(normalized(pattern, text), expected) << expression;
  }
}

std::string times(int count, const std::string& text) {
  std::string result;
  for (int i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

TEST(NormalizationPattern, TakesNoStackOrTimeForLongExpressions) {
  for (const std::string& expression :
       {times(30, "(a?|b?)") + "c", times(120000, "a?") + "c",
        times(12, "(") + "c" + times(12, ")?"), times(40, "(") + "c" + times(40, ")"),
        times(15, "(a|b)") + "c"}) {
    const OrvDiffNormalizationPattern pattern(expression.c_str(), nullptr);
    EXPECT_EQ(normalized(pattern, "dcd").substr(0, 1), "d");
  }
}

TEST(NormalizationPattern, AListSearchesWhereIcuGivesUp) {
  const std::string text = times(200000, "ab");
  for (const char* const expression : {"(a|b)*c", "(a|bb?)*[ab]?[ab]?c", "a.*a[ab]*?(bb)?c"}) {
    const OrvDiffNormalizationPattern pattern(expression, nullptr);
    OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
    OrvTextBuffer ending = OrvDiffLib::strdupnew((text + "cd").c_str());
    OrvDiffLib::cleanse(buffer, ending, {&pattern});
    EXPECT_EQ(buffer.get(), text) << expression;
    EXPECT_STREQ(ending.get(), "d") << expression;
  }
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  const OrvDiffNormalizationPattern alone("(a|b)*c", nullptr);
  EXPECT_EQ(raisedBy([&] { alone.normalizeText(buffer); }), kFailed);
}

TEST(NormalizationPattern, AListMayMakeTheTextLongerThroughIcu) {
  const OrvDiffNormalizationPattern first("a", nullptr);
  const OrvDiffNormalizationPattern growing("^", "x");  // only ICU runs this
  const OrvDiffNormalizationPattern last("b", nullptr);
  OrvPatternList patterns(500, &growing);
  patterns.front() = &first;
  patterns.back() = &last;
  OrvTextBuffer master = OrvDiffLib::strdupnew("aby");
  OrvTextBuffer actual = OrvDiffLib::strdupnew("byb");
  OrvDiffLib::cleanse(master, actual, patterns);
  EXPECT_EQ(master.get(), times(498, "x") + "y");
  EXPECT_STREQ(actual.get(), master.get());
}

TEST(NormalizationPattern, RefusesMisuse) {
  EXPECT_EQ(raisedBy([] { OrvDiffNormalizationPattern("(", nullptr); }),
            "OrvDiffNormalizationPattern: VEL_ASSERT_NAMED(m_regEx, \"Regular expression "
            "compiled\");");
  const OrvDiffNormalizationPattern pattern("a", nullptr);
  OrvTextBuffer none;
  EXPECT_EQ(raisedBy([&] { pattern.normalizeText(none); }),
            "OrvDiffNormalizationPattern: VEL_ASSERT(buffer.get());");
}

TEST(ConversionAllocator, FollowsTheConvertersProtocol) {
  const auto allocate = OrvDiffNormalizationPattern::conversionAllocator;
  int status = 7;
  const std::unique_ptr<char[]> block(allocate(nullptr, nullptr, 3, &status));
  EXPECT_TRUE(block != nullptr && status == 0);
  EXPECT_TRUE(allocate(nullptr, nullptr, -1, &status) == nullptr && status == -10);
  EXPECT_TRUE(allocate(nullptr, new char[8], 0, &status) == nullptr && status == 0);
  EXPECT_EQ(allocate(nullptr, nullptr, -1, nullptr), nullptr);
  EXPECT_EQ(raisedBy([&] { allocate(nullptr, block.get(), 3, &status); }),
            "OrvDiffNormalizationPattern: VEL_ASSERT_NAMED(!pBufferToDelete, \"Do not support "
            "reallocation\");");
}

using Patterns = OrvDiffNormalizationPatterns;

#define NS "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13"

/// A text that the pattern changes, what becomes of it, and a near miss, which it leaves alone.
// clang-format off
const struct {
  Patterns::OrvNormalizationPatternsEnum id;
  const char *text, *result, *unchanged;
} kRows[] = {
    {Patterns::eScriptElement, "a<script x>\nb</script>c</script>", "ac</script>", "<SCRIPT></SCRIPT><script>"},
    {Patterns::eChartNameAttribute, R"~(<i name="chart1" x>)~", "<i  x>", R"~(<i name="Chart1" filename="chart1">)~"},
    {Patterns::eNextNameAndIdAttributes, R"~(<a name="next1" id="next2">)~", "<a >", R"~(<a name="next1"  id="next2">)~"},
    {Patterns::eCopyrightMetaTag, "a<meta name=\"Copyright\" c>\r\n\nb", "ab", R"~(<meta name="copyright">)~"},
    {Patterns::eGeneratorIdMetaTag, "a<meta name=\"GeneratorID\" c>\n\nb", "ab", R"~(<meta name="Generator">)~"},
    {Patterns::eTrademarkMetaTag, "a<meta name=\"Trademark\" c>\nb", "a\nb", "<meta name=\"Trademark\"\n>"},
    {Patterns::eUaCompatibleMetaTag, "<meta http-equiv=\"X-UA-Compatible\" c>\nb", "b", R"~(<meta http-equiv="X+UA+Compatible">)~"},
    {Patterns::eEventHandlerAttribute, R"~(<a onclick="f(1)"  ondblclick="" b>)~", "<a b>", R"~(<a onblur="f()" onclick='f()'>)~"},
    {Patterns::eImageSourcePrefix, R"~(<img src="../v1/a/v1/b">)~", R"~(a/v1/b">)~", "<img src=\"a\nv1/b\">"},
    {Patterns::eCtxAttribute, R"~(<td ctx="1:2:3">)~", "<td>", R"~(<td ctx="" ctx="a">)~"},
    {Patterns::eNameAttribute, R"~(<td name="a_1"  x>)~", "<tdx>", R"~(<td name="a-1">)~"},
    {Patterns::ePromptIdAttribute, R"~(<i id="PRMT_a1" x>)~", "<ix>", R"~(<i id="PRMT_" id="prmt_a">)~"},
    {Patterns::eForAttribute, R"~(<l for="a[0]" x>)~", "<lx>", R"~(<l for="a.b">)~"},
    {Patterns::eAriaLabelledByAttribute, R"~(<td  aria-labelledby=" _THIS_a.bhiddenspan1 c.d" x>)~", "<tdx>", R"~(<td aria-labelledby="a b">)~"},
    {Patterns::eAriaLabelledByHeadersAttribute, R"~(<td aria-labelledby="_THIS_hdr1 _THIS_hdr22 _THIS_ahiddenspan3 b.c" x>)~", "<td x>", R"~(<td aria-labelledby="_THIS_hdr b">)~"},
    {Patterns::eIdAttribute, R"~(<td  id="a.b_1"  x>)~", "<tdx>", R"~(<td id="a-b">)~"},
    {Patterns::eChartTempName, "chart_tmp_12.png", ".png", "chart_tmp_x"},
    {Patterns::eRemoveReferenceCall, "c12.removeReference()", "()", "c12-removeReference c.removeReference"},
    {Patterns::eCoordsAttribute, R"~(<area coords="1,2" x>)~", "<area  x>", R"~(<area xcoords="1,2">)~"},
    {Patterns::eCoordElement, "a<coord>1</coord>b", "ab", "<coord>\n</coord>"},
    {Patterns::eLabelForTag, R"~(a<label for="x y">b)~", "ab", R"~(<label for="x" y>)~"},
    {Patterns::eQuotedPrintableEquals, "a=3Db", "a=b", "a=3db"},
    {Patterns::eBinDirectory, R"~(a/bin\b\bind/c)~", "abc", "/bi/ /binds/ bin/"},
    {Patterns::eExcelDataElement, "a<x:Data>1</x:Data>b", "ab", "<x:Data>\n</x:Data>"},
    {Patterns::eExponentNumber, "a-1.5E+10b.2e-3c", "abc", "1.5E10"},
    {Patterns::eDecimalNumber, "a-1.5b+.25e-3c", "abc", "15 1."},
    {Patterns::eQuotedChartTempName, R"~(<i src="a/chart_tmp_1">)~", "<i src=>", R"~("chart_tmp_1.png)~"},
    {Patterns::eFilenameElement, "a<filename>f</filename>b", "ab", "<filename>\n</filename>"},
    {Patterns::eAreaElement, "x<area a>b</area>y", "xy", "<area a>\n</area>"},
    {Patterns::eAreaTag, "x<area a>b</area>y", "xb</area>y", "<are a><area\n>"},
    {Patterns::ePngContent, "a Content-Type: image/png; name=x\nb", "a \nb", "Content-Type: image/gif"},
    {Patterns::eLineBreak, "a\nb\r\nc\n\nd", "abcd", "a\rb"},
    {Patterns::eSoftLineBreak, "a=\nb=\r\nc", "abc", "a= \nb\n"},
    {Patterns::eWidthStyle, "height:1px;width:12px;x", "height:1px;x", "width:12;width:px;"},
    {Patterns::eAxisValueAsStringLine, "a\nb getAxisValueAsString(1) c\n\r\nd", "a\nd", "getAxisvalueAsString"},
    {Patterns::eTitleAttribute, R"~(<a title="x y" z>)~", "<a  z>", R"~(<a subtitle="x">)~"},
    {Patterns::eReportSpecNamespaceVersion, "\"" NS ".12/\"" NS ".1/", "\"" NS "/\"" NS "/", NS "/ " NS "./ https" NS ".1"},
};
// clang-format on

TEST(Catalogue, EveryRowChangesItsTextAndLeavesTheNearMiss) {
  ASSERT_EQ(std::size(kRows), 37U);
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    const auto& row = kRows[i];
    ASSERT_EQ(static_cast<std::size_t>(row.id), i);
    EXPECT_EQ(normalized(*Patterns::getPattern(row.id), row.text), row.result) << i;
    EXPECT_EQ(normalized(*Patterns::getPattern(row.id), row.unchanged), row.unchanged) << i;
  }
  std::string other = NS ".1/";  // the host is taken literally
  other[other.find('.')] = 'x';
  EXPECT_EQ(normalized(*Patterns::getPattern(Patterns::eReportSpecNamespaceVersion), other), other);
}

TEST(Catalogue, SharesAPatternUntilReset) {
  Patterns::reset();
  const auto* const pattern = Patterns::getPattern(Patterns::eCoordElement);
  EXPECT_EQ(Patterns::getPattern(Patterns::eCoordElement), pattern);
  EXPECT_NE(Patterns::getPattern(Patterns::eFilenameElement), pattern);
  OrvSharedPatternList held;  // keeps the old pattern in memory, so the new one is elsewhere
  held.add(pattern);
  Patterns::reset();
  EXPECT_NE(Patterns::getPattern(Patterns::eCoordElement), pattern);
  EXPECT_EQ(normalized(*held.list().front(), "<coord></coord>"), "");
}

}  // namespace

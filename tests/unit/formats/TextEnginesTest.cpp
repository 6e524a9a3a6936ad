#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "tests/support/PlainNormalizer.h"
#include "tests/support/Testing.h"

namespace {

using P = OrvDiffNormalizationPatterns;
using Ids = std::vector<P::OrvNormalizationPatternsEnum>;

// clang-format off
const Ids kNao = {
    P::eScriptElement, P::eChartNameAttribute, P::eNextNameAndIdAttributes, P::eCopyrightMetaTag,
    P::eGeneratorIdMetaTag, P::eTitleAttribute, P::eTrademarkMetaTag, P::eUaCompatibleMetaTag,
    P::eEventHandlerAttribute, P::eCtxAttribute, P::eIdAttribute, P::eNameAttribute,
    P::eCoordsAttribute, P::eLabelForTag};
const Ids kMht = {
    P::eSoftLineBreak, P::eLineBreak, P::eQuotedPrintableEquals, P::eScriptElement,
    P::eChartNameAttribute, P::eImageSourcePrefix, P::eCopyrightMetaTag, P::eGeneratorIdMetaTag,
    P::eTrademarkMetaTag, P::eUaCompatibleMetaTag};
const Ids kHtml = {
    P::eLineBreak, P::eScriptElement, P::eChartNameAttribute, P::eNextNameAndIdAttributes,
    P::eCopyrightMetaTag, P::eGeneratorIdMetaTag, P::eTrademarkMetaTag, P::eUaCompatibleMetaTag,
    P::eEventHandlerAttribute, P::ePromptIdAttribute, P::eCoordsAttribute,
    P::eAriaLabelledByAttribute, P::eIdAttribute, P::eAriaLabelledByHeadersAttribute,
    P::eCtxAttribute, P::eForAttribute, P::eNameAttribute};
const Ids kCoords = {P::eCoordsAttribute};

const struct {
  const char* format;
  Ids ids;
} kEngines[] = {
    {"nao", kNao},
    {"prompt-nao", kNao},
    {"cgs", {P::eChartTempName, P::eRemoveReferenceCall, P::eBinDirectory}},
    {"drilled-report-spec", {P::eCoordsAttribute, P::eReportSpecNamespaceVersion}},
    {"ref-query-items", kCoords},
    {"drill-up-down-state", kCoords},
    {"paged-layout-data", {P::eCoordElement, P::eFilenameElement}},
    {"raw-xml", kCoords},
    {"mht", kMht},
    {"ra", kMht},
    {"html", kHtml},
    {"xhtml", {P::eScriptElement, P::eChartNameAttribute, P::eCoordsAttribute}},
    {"xls", {P::eScriptElement, P::eImageSourcePrefix}},
    {"xlwa", {P::eScriptElement, P::eImageSourcePrefix}},
    {"xml", {}},
    {"viz", {}},
    {"prp", {}},
};

/// For each pattern of the catalogue, a text that it matches as a whole.
const char* const kMatches[] = {
    "<script></script>", R"(name="chart1")", R"(name="next1" id="next1")", R"(<meta name="Copyright">)",
    R"(<meta name="GeneratorID">)", R"(<meta name="Trademark">)",
    R"(<meta http-equiv="X-UA-Compatible">)", R"(onclick="f")", "<img src=v1/", R"( ctx="1")",
    R"( name="a")", R"( id="PRMT_a")", R"( for="a")", R"( aria-labelledby="a")",
    R"(aria-labelledby="_THIS_hdr1 a")", R"( id="a")", "chart_tmp_1", "c1.removeReference",
    R"(coords="1")", "<coord></coord>", R"(<label for="a">)", "=3D", "/bin/", "<x:Data></x:Data>",
    "1e+1", "1.5", R"("chart_tmp_1")", "<filename></filename>", "<area></area>", "<area>",
    "Content-Type: image/png", "\n", "=\n", "width:1px;", "getAxisValueAsString", R"(title="a")",
    "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13.1/"};
// clang-format on

/// A text that reveals whether exactly these patterns are applied in exactly this order: the match
/// of each pattern of the catalogue, and for two consecutive patterns the match of one inside that
/// of the other, at every position: only deleting the inner one first leaves a match for the outer.
std::string makeTellingText(const Ids& ids) {
  std::string text;
  for (const char* const match : kMatches) {
    text += std::string(match) + "#\n#";
  }
  for (std::size_t i = 1; i < ids.size(); ++i) {
    const std::string pair[] = {kMatches[ids[i - 1]], kMatches[ids[i]]};
    for (const int outer : {0, 1}) {
      for (std::size_t at = 1; at < pair[outer].size(); ++at) {
        text += std::string(pair[outer]).insert(at, pair[1 - outer]) + "#\n#";
      }
    }
  }
  return text + "\"chart_chart_tmp_1tmp_1\"";
}

TEST(TextEngines, ApplyTheirListsInOrder) {
  const TestFolder folder;
  TestFolder::write("a", "$");
  for (const auto& row : kEngines) {
    const std::string text = makeTellingText(row.ids);
    OrvPatternList patterns;
    for (const auto id : row.ids) {
      patterns.push_back(P::getPattern(id));
    }
    const std::string expected = normalizePlainly(text, patterns);
    TestFolder::write("m", text + "\r");
    TestFolder::write("same", text);
    OrvFormatArguments arguments;
    arguments.outputDirectoryTypeName = "given";
    const auto engine = OrvDiffFormats::find(row.format)->createEngine(arguments);
    EXPECT_EQ(described(engine->performDiff("m", "a", nullptr)),
              row.ids.empty() ? "diff m a" : "normalized m a at 0 " + expected + "|$")
        << row.format;
    EXPECT_EQ(described(engine->performDiff("m", "same", nullptr)), "pass m same") << row.format;
  }
}

TEST(TextEngines, RefuseANullPattern) {
  struct Engine : OrvDiffXmlFileEngine {
    Engine() : OrvDiffXmlFileEngine(nullptr) { addCleansingPattern(nullptr); }
  };
  EXPECT_EQ(storyOf([] { Engine(); }),
            "VEL_ASSERT(pattern); [OrvDiffTextFileTypeEngine:68, VEL_THROW]");
}

}  // namespace

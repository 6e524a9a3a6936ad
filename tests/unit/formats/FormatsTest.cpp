#include "orvdiff/formats/OrvDiffFormats.h"

#include <optional>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/PlainNormalizer.h"
#include "tests/support/Testing.h"

namespace {

using F = OrvOutputFormat;
using P = OrvDiffNormalizationPatterns;
using Ids = std::vector<P::OrvNormalizationPatternsEnum>;

// clang-format off
const Ids kNone, kCoords = {P::eCoordsAttribute}, kNao = {
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

enum Takes { kMemory, kDisk };

const struct Row {
  std::string name;
  F format;
  std::string outputs;             ///< after "v5Debug"; none: an argument of the engine
  std::string masters;             ///< after the master folder
  std::optional<Ids> patterns = {};  ///< of engines that compare normalised text
  Takes takes = kMemory;           ///< where an output may be for it to be compared
} kRows[] = {
    {"nao", F::Nao, "NAO", "/R*.nao", kNao}, {"mht", F::Mht, "MHT", "/R*.mht", kMht},
    {"prompt-nao", F::PromptNao, "PromptNAO", "/PromptNAO/R*.nao", kNao},
    {"cgs", F::Cgs, "", "/R*.cgs",
     Ids{P::eChartTempName, P::eRemoveReferenceCall, P::eBinDirectory}, kDisk},
    {"drilled-report-spec", F::DrilledReportSpec, "DrilledReportSpec", "/DrilledReportSpec/R*.xml",
     Ids{P::eCoordsAttribute, P::eReportSpecNamespaceVersion}},
    {"ref-query-items", F::RefQueryItem, "RefQueryItems", "/RefQueryItems/R*.xml", kCoords},
    {"drill-up-down-state", F::DrillUpDownState, "DrilledUpDownState",
     "/DrilledUpDownState/R*.xml", kCoords},
    {"paged-layout-data", F::PagedLayoutDataXml, "PagedDataXML", "/PagedDataXML/R*.xml",
     Ids{P::eCoordElement, P::eFilenameElement}},
    {"raw-xml", F::RawXml, "RawXml", "/RawXML/R*.xml", kCoords},
    {"ra", F::Ra, "RA", "/R*.mht", kMht},
    {"html", F::Html, "HTML", "/R*.html", kHtml}, {"prp", F::Prp, "", "/R*.prp", kNone},
    {"xhtml", F::Xhtml, "XHTML", "/R*.xml",
     Ids{P::eScriptElement, P::eChartNameAttribute, P::eCoordsAttribute}},
    {"xml", F::Xml, "XML", "/XML/R*.xml", kNone}, {"viz", F::Viz, "Viz", "/Viz/R*.xml", kNone},
    {"xls", F::Xls, "XLS", "/XLS/R*.html", Ids{P::eScriptElement, P::eImageSourcePrefix}},
    {"xlwa", F::Xlwa, "XLWA", "/XLWA/R.mht", Ids{P::eScriptElement, P::eImageSourcePrefix}},
    {"html-png", F::HtmlPng, "HTML", "/R*.png"}, {"xhtml-png", F::XhtmlPng, "XHTML", "/R*.png"},
    {"layout-data-png", F::LayoutDataXmlPng, "DataXML", "/DataXML/R*.png"},
    {"paged-layout-data-png", F::PagedLayoutDataXmlPng, "PagedDataXML", "/PagedDataXML/R*.png"},
    {"raw-xml-png", F::RawXmlPng, "RawXml", "/R*.png"}, {"vmd", F::Vmd, "VMD", "/vmd/R*.vmd"},
    {"ctx-metadata", F::CtxMetadataXml, "CtxMetadata", "/CtxMetadata/R*.xml", {}, kDisk},
    {"drill-through-targets", F::AuthoredDThroughTargetsXml, "VirtualDrillTargets",
     "/VirtualDThroughTargets/R*.xml", {}, kDisk},
    {"layout-data", F::LayoutDataXml, "DataXML", "/DataXML/R*.xml"},
    {"pdf", F::Pdf, "PDF", "/PDF/R*.pdf", {}, kDisk},
    {"csv", F::Csv, "CSV", "/CSV/R*.csv", {}, kDisk},
    {"xlsx", F::Xlsx, "XLS2007", "/XLS2007/R*.xlsx", {}, kDisk},
    {"single-xls", F::SingleXls, "SingleXLS", "/singleXLS/R*.html", {}, kDisk},
    {"json", F::Json, "JSON", "/JSON/R*.json", {}, kDisk},
    {"csi", F::Csi, "ROM", "/R*.csi", {}, kDisk},
    {"di", F::DiTree, "DI", "/R*.di", {}, kDisk}};
// clang-format on

std::string report(const std::string& mode) {  // also layout data and statistics
  return "<report xmlns='urn:r'>\n\nMapping Mode - " + mode + "\n</report>\n";
}

TEST(Formats, EachFindsAndComparesItsFiles) {
  const TestFolder folder;
  TestFolder::write("r.xsd",
                    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                    "targetNamespace='urn:r'><xs:element name='report'/></xs:schema>");
  ASSERT_EQ(OrvDiffFormats::all().size(), std::size(kRows));
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const OrvDiffFormat* const format = OrvDiffFormats::find(row.name);
    ASSERT_NE(format, nullptr);
    EXPECT_EQ(format->format, row.format);
    EXPECT_EQ(format->needsArguments, row.outputs.empty());
    const std::filesystem::path glob = "s/Masters/fr" + row.masters;
    const std::string outputs = row.outputs.empty() ? "given" : "v5Debug" + row.outputs;
    std::vector<OrvFilePair> pairs;
    for (const std::string page : {"R", "R_1", "S"}) {
      const std::string name = "/" + page + glob.extension().string();
      pairs.push_back(
          {glob.parent_path().string() + name, "../webcontent/bi/" + outputs + "/fr" + name});
      TestFolder::write(pairs.back().master, report("a"));
      TestFolder::write(pairs.back().actual, report(page == "R" ? "a" : "b"));
    }
    Recorder recorder;
    const auto engine = format->createEngine({"fr", "given", nullptr, nullptr, "urn:r", "r.xsd"});
    engine->verifyOutput({&recorder}, "s/R.xml", nullptr);
    const bool hasPages = row.masters.find('*') != std::string::npos;
    ASSERT_EQ(recorder.heard.size(), hasPages ? 2U : 1U);
    const std::string passes = format->comparison == "external script" ? "diff " : "pass ";
    EXPECT_EQ(recorder.heard[0], passes + pairs[0].master + " " + pairs[0].actual);
    if (hasPages) {
      EXPECT_THAT(recorder.heard[1], HasSubstr(pairs[1].master + " " + pairs[1].actual));
      EXPECT_THAT(recorder.heard[1], Not(StartsWith("pass")));
    }
    std::filesystem::remove(pairs[0].actual);
    OrvTestInfo info;
    std::strstream& output = info.addOutput(pairs[0].actual, false);
    output << report("a") << std::ends;
    output.seekp(-1, std::ios::cur);  // ends the text, but does not belong to the bytes
    EXPECT_THAT(described(engine->comparePair(pairs[0], &info)),
                StartsWith(row.takes == kMemory ? "pass" : "missing"));
  }
  EXPECT_EQ(OrvDiffFormats::find("HTML"), nullptr);
}

TEST(TextEngines, ApplyTheirListsInOrder) {
  const TestFolder folder;
  const std::string text = R"(<script></script> coords="1" <coord></coord> chart_tmp_1)";
  for (const Row& row : kRows) {
    if (row.patterns) {
      SCOPED_TRACE(row.name);
      const auto engine = OrvDiffFormats::find(row.name)->createEngine({nullptr, "given"});
      const OrvPatternList& patterns = *engine->getCleansingPatterns();
      ASSERT_EQ(patterns.size(), row.patterns->size());
      EXPECT_TRUE(std::equal(patterns.begin(), patterns.end(), row.patterns->begin(),
                             [](auto* pattern, auto id) { return pattern == P::getPattern(id); }));
      const std::string expected = normalizePlainly(text, patterns);
      EXPECT_EQ(expected == text, patterns.empty());
      EXPECT_EQ(compared(*engine, text + "\r", "$"),
                patterns.empty() ? "diff m a" : "normalized m a at 0 " + expected + "|$");
    }
  }
  struct Engine : OrvDiffXmlFileEngine {
    Engine() : OrvDiffXmlFileEngine(nullptr) { addCleansingPattern(nullptr); }
  };
  EXPECT_EQ(storyOf([] { Engine(); }),
            "VEL_ASSERT(pattern); [OrvDiffTextFileTypeEngine:68, VEL_THROW]");
}

TEST(TextEngines, TheLastOneReleasesTheCatalogue) {
  const TestFolder folder;
  auto engine = OrvDiffFormats::find("html")->createEngine({});
  OrvSharedPatternList held;  // keeps the pattern's address from being used again
  held.add(P::getPattern(P::eScriptElement));
  OrvDiffFormats::find("nao")->createEngine({});  // gone at once, and with it what nobody holds
  EXPECT_EQ(compared(*engine, "<script>x</script>", "<script>y</script>"), "pass m a");
  engine.reset();
  EXPECT_NE(P::getPattern(P::eScriptElement), held.list().front());
}

TEST(Formats, FurtherArgumentsOfCgsAndPrp) {
  std::string copied = "S";
  OrvDiffCgsFileEngine both("fr", copied.c_str(), copied.c_str(), "X");
  OrvDiffCgsFileEngine suffix(nullptr, "d", "", "X");
  OrvDiffPrpFileEngine subFolder("fr", copied.c_str(), copied.c_str());
  copied = "?";
  EXPECT_EQ(both.getMasterFileGlobExpression("s/R.xml"), "s/Masters/fr/S/R*_X.cgs");
  EXPECT_EQ(suffix.getMasterFileGlobExpression("s/R.xml"), "s/Masters/R*_X.cgs");
  EXPECT_EQ(subFolder.getMasterFileGlobExpression("s/R.xml"), "s/Masters/fr/S/R*.prp");
  EXPECT_EQ(both.getOutputDirectoryTypeName() + subFolder.getOutputDirectoryTypeName(), "SS");
  EXPECT_THROW(OrvDiffCgsFileEngine(nullptr, nullptr, "S", "X"), VELAssertError);
  EXPECT_THROW(OrvDiffPrpFileEngine(nullptr, nullptr, "S"), VELAssertError);
}

TEST(Formats, DataAreComparedAsTheirFormatAsks) {
  const std::string kVmd = "Report\n\nMapping Mode - full\n";
  const std::tuple<const char*, std::string, std::string, const char*> kComparisons[] = {
      {"csv", "a,b\n", "a,b\r\n", "diff m a"},
      {"csv", std::string("a\0b", 3), std::string("a\0c", 3), "diff m a"},
      {"json", R"({"a":1,"b":2})", R"({"b":2,"a":1})", "diff m a"},
      {"csi", "a\nb", "a\r\nb", "pass m a"},
      {"di", "a\r\rb", "ab", "pass m a"},
      {"di", "<script></script>a", "a", "diff m a"},
      {"single-xls", "<script>1</script>a\r\n", "<script>2</script>a\n", "pass m a"},
      {"single-xls", R"(<img src="../x/v1/c.png">)", R"(<img src="../y/v1/c.png">)", "pass m a"},
      {"single-xls", "<script>1</script>ab", "ac", "normalized m a at 1 ab|ac"},
      {"vmd", kVmd, kVmd + "Total Objects with reference count > 0 : 0\n", "pass m a"},
      {"vmd", kVmd, kVmd.substr(0, kVmd.size() - 1), "diff m a"},
  };
  const TestFolder folder;
  for (const auto& [format, master, actual, verdict] : kComparisons) {
    const auto engine = OrvDiffFormats::find(format)->createEngine({});
    EXPECT_EQ(compared(*engine, master, actual), verdict)
        << format << ": " << master << " against " << actual;
    EXPECT_EQ(described(engine->performDiff("gone", "a", nullptr)), "missing gone a gone");
  }
}

}  // namespace

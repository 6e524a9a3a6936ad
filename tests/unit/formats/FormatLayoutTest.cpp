#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffDataEngines.h"
#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffScriptEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/Testing.h"

namespace {

using Format = OrvOutputFormat;

const std::string kLocation = "s/R.xml";

template <typename Engine>
std::string globOf(const OrvDiffFileEngine& engine) {
  return dynamic_cast<const Engine&>(engine).getMasterFileGlobExpression(kLocation);
}

struct Row {
  const char* name;
  Format format;
  std::string (*glob)(const OrvDiffFileEngine&);
  const char* outputDirectoryTypeName;
  const char* tail;  ///< behind the master folder
};

// clang-format off
const Row kRows[] = {
    {"nao", Format::Nao, globOf<OrvDiffNaoFileEngine>, "v5DebugNAO", "/R*.nao"},
    {"prompt-nao", Format::PromptNao, globOf<OrvDiffPnaoFileEngine>, "v5DebugPromptNAO", "/PromptNAO/R*.nao"},
    {"cgs", Format::Cgs, globOf<OrvDiffCgsFileEngine>, "given", "/R*.cgs"},
    {"drilled-report-spec", Format::DrilledReportSpec, globOf<OrvDiffDrilledReportSpecEngine>, "v5DebugDrilledReportSpec", "/DrilledReportSpec/R*.xml"},
    {"ref-query-items", Format::RefQueryItem, globOf<OrvDiffRefQueryItemEngine>, "v5DebugRefQueryItems", "/RefQueryItems/R*.xml"},
    {"drill-up-down-state", Format::DrillUpDownState, globOf<OrvDiffDrillUpDownStateEngine>, "v5DebugDrilledUpDownState", "/DrilledUpDownState/R*.xml"},
    {"paged-layout-data", Format::PagedLayoutDataXml, globOf<OrvDiffPagedLayoutDataXmlFileEngine>, "v5DebugPagedDataXML", "/PagedDataXML/R*.xml"},
    {"raw-xml", Format::RawXml, globOf<OrvDiffRawXmlFileEngine>, "v5DebugRawXml", "/RawXML/R*.xml"},
    {"mht", Format::Mht, globOf<OrvDiffMhtFileEngine>, "v5DebugMHT", "/R*.mht"},
    {"ra", Format::Ra, globOf<OrvDiffRaFileEngine>, "v5DebugRA", "/R*.mht"},
    {"html", Format::Html, globOf<OrvDiffHtmlFileEngine>, "v5DebugHTML", "/R*.html"},
    {"xhtml", Format::Xhtml, globOf<OrvDiffXhtmlFileEngine>, "v5DebugXHTML", "/R*.xml"},
    {"xml", Format::Xml, globOf<OrvDiffXmlFileEngine>, "v5DebugXML", "/XML/R*.xml"},
    {"viz", Format::Viz, globOf<OrvDiffVizFileEngine>, "v5DebugViz", "/Viz/R*.xml"},
    {"xls", Format::Xls, globOf<OrvDiffXlsFileEngine>, "v5DebugXLS", "/XLS/R*.html"},
    {"xlwa", Format::Xlwa, globOf<OrvDiffXlwaFileEngine>, "v5DebugXLWA", "/XLWA/R.mht"},
    {"prp", Format::Prp, globOf<OrvDiffPrpFileEngine>, "given", "/R*.prp"},
    {"html-png", Format::HtmlPng, globOf<OrvDiffHtmlPngFileEngine>, "v5DebugHTML", "/R*.png"},
    {"layout-data-png", Format::LayoutDataXmlPng, globOf<OrvDiffLayoutDataXmlPngFileEngine>, "v5DebugDataXML", "/DataXML/R*.png"},
    {"paged-layout-data-png", Format::PagedLayoutDataXmlPng, globOf<OrvDiffPagedLayoutDataXmlPngFileEngine>, "v5DebugPagedDataXML", "/PagedDataXML/R*.png"},
    {"raw-xml-png", Format::RawXmlPng, globOf<OrvDiffRawXmlPngFileEngine>, "v5DebugRawXml", "/R*.png"},
    {"xhtml-png", Format::XhtmlPng, globOf<OrvDiffXhtmlPngFileEngine>, "v5DebugXHTML", "/R*.png"},
    {"ctx-metadata", Format::CtxMetadataXml, globOf<OrvDiffCtxMetadataXmlFileEngine>, "v5DebugCtxMetadata", "/CtxMetadata/R*.xml"},
    {"drill-through-targets", Format::AuthoredDThroughTargetsXml, globOf<OrvDiffAuthoredDThroughTargetsXmlFileEngine>, "v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/R*.xml"},
    {"layout-data", Format::LayoutDataXml, globOf<OrvDiffLayoutDataXmlFileEngine>, "v5DebugDataXML", "/DataXML/R*.xml"},
    {"pdf", Format::Pdf, globOf<OrvDiffPdfFileEngine>, "v5DebugPDF", "/PDF/R*.pdf"},
    {"xlsx", Format::Xlsx, globOf<OrvDiffXlsxFileEngine>, "v5DebugXLS2007", "/XLS2007/R*.xlsx"},
    {"single-xls", Format::SingleXls, globOf<OrvDiffSingleXlsFileEngine>, "v5DebugSingleXLS", "/singleXLS/R*.html"},
    {"csv", Format::Csv, globOf<OrvDiffCsvFileEngine>, "v5DebugCSV", "/CSV/R*.csv"},
    {"json", Format::Json, globOf<OrvDiffJsonFileEngine>, "v5DebugJSON", "/JSON/R*.json"},
    {"csi", Format::Csi, globOf<OrvDiffCsiFileEngine>, "v5DebugROM", "/R*.csi"},
    {"di", Format::DiTree, globOf<OrvDiffDiTreeFileEngine>, "v5DebugDI", "/R*.di"},
    {"vmd", Format::Vmd, globOf<OrvDiffVmdFileEngine>, "v5DebugVMD", "/vmd/R*.vmd"},
};
// clang-format on

TEST(Formats, EveryFormatHasItsEngineInItsPlaces) {
  ASSERT_EQ(OrvDiffFormats::all().size(), std::size(kRows));
  for (const Row& row : kRows) {
    const OrvDiffFormat* const format = OrvDiffFormats::find(row.name);
    ASSERT_NE(format, nullptr) << row.name;
    EXPECT_EQ(format->format, row.format) << row.name;
    const bool given = std::string(row.outputDirectoryTypeName) == "given";
    EXPECT_EQ(format->needsArguments, given) << row.name;
    OrvFormatArguments arguments;
    arguments.subFolder = "fr";
    arguments.outputDirectoryTypeName = given ? "given" : nullptr;
    const auto engine = format->createEngine(arguments);
    EXPECT_EQ(engine->getOutputDirectoryTypeName(), row.outputDirectoryTypeName);
    EXPECT_EQ(row.glob(*engine), std::string("s/Masters/fr") + row.tail);
  }
  EXPECT_EQ(OrvDiffFormats::find("HTML"), nullptr);
}

TEST(Formats, FurtherArgumentsOfCgsAndPrp) {
  std::string copied = "S";
  const OrvDiffCgsFileEngine both("fr", copied.c_str(), copied.c_str(), "X");
  const OrvDiffCgsFileEngine suffix(nullptr, "d", "", "X");
  const OrvDiffPrpFileEngine subFolder("fr", copied.c_str(), copied.c_str());
  copied = "?";
  EXPECT_EQ(globOf<OrvDiffCgsFileEngine>(both), "s/Masters/fr/S/R*_X.cgs");
  EXPECT_EQ(globOf<OrvDiffCgsFileEngine>(suffix), "s/Masters/R*_X.cgs");
  EXPECT_EQ(globOf<OrvDiffPrpFileEngine>(subFolder), "s/Masters/fr/S/R*.prp");
  EXPECT_EQ(both.getOutputDirectoryTypeName() + subFolder.getOutputDirectoryTypeName(), "SS");
  EXPECT_THROW(OrvDiffCgsFileEngine(nullptr, nullptr, "S", "X"), VELAssertError);
  EXPECT_THROW(OrvDiffPrpFileEngine(nullptr, nullptr, "S"), VELAssertError);
}

TEST(Formats, ChartGraphicsScriptsAreNeverTakenFromMemory) {
  const TestFolder folder;
  TestFolder::write("s/Masters/R.cgs", "text");
  OrvTestInfo info;
  info.addOutput("../webcontent/bi/d/R.cgs", false) << "text" << std::ends;
  Recorder recorder;
  OrvDiffCgsFileEngine(nullptr, "d", nullptr, nullptr)
      .verifyOutput({&recorder}, kLocation.c_str(), &info);
  TestFolder::write("../webcontent/bi/d/R.cgs", "text");
  OrvDiffCgsFileEngine(nullptr, "d", nullptr, nullptr)
      .verifyOutput({&recorder}, kLocation.c_str(), &info);
  const std::string kNames = " s/Masters/R.cgs ../webcontent/bi/d/R.cgs";
  EXPECT_THAT(recorder.heard, testing::ElementsAre("missing" + kNames + " ../webcontent/bi/d/R.cgs",
                                                   "pass" + kNames));
}

}  // namespace

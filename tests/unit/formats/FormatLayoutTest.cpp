#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/Testing.h"

namespace {

using Format = OrvOutputFormat;

struct Row {
  const char* name;
  Format format;
  const char* outputs;
  std::string masters;  ///< behind the master folder
};

// clang-format off
const Row kRows[] = {
    {"nao", Format::Nao, "v5DebugNAO", "/R*.nao"},
    {"prompt-nao", Format::PromptNao, "v5DebugPromptNAO", "/PromptNAO/R*.nao"},
    {"cgs", Format::Cgs, "given", "/R*.cgs"},
    {"drilled-report-spec", Format::DrilledReportSpec, "v5DebugDrilledReportSpec", "/DrilledReportSpec/R*.xml"},
    {"ref-query-items", Format::RefQueryItem, "v5DebugRefQueryItems", "/RefQueryItems/R*.xml"},
    {"drill-up-down-state", Format::DrillUpDownState, "v5DebugDrilledUpDownState", "/DrilledUpDownState/R*.xml"},
    {"paged-layout-data", Format::PagedLayoutDataXml, "v5DebugPagedDataXML", "/PagedDataXML/R*.xml"},
    {"raw-xml", Format::RawXml, "v5DebugRawXml", "/RawXML/R*.xml"},
    {"mht", Format::Mht, "v5DebugMHT", "/R*.mht"},
    {"ra", Format::Ra, "v5DebugRA", "/R*.mht"},
    {"html", Format::Html, "v5DebugHTML", "/R*.html"},
    {"xhtml", Format::Xhtml, "v5DebugXHTML", "/R*.xml"},
    {"xml", Format::Xml, "v5DebugXML", "/XML/R*.xml"},
    {"viz", Format::Viz, "v5DebugViz", "/Viz/R*.xml"},
    {"xls", Format::Xls, "v5DebugXLS", "/XLS/R*.html"},
    {"xlwa", Format::Xlwa, "v5DebugXLWA", "/XLWA/R.mht"},
    {"prp", Format::Prp, "given", "/R*.prp"},
    {"html-png", Format::HtmlPng, "v5DebugHTML", "/R*.png"},
    {"layout-data-png", Format::LayoutDataXmlPng, "v5DebugDataXML", "/DataXML/R*.png"},
    {"paged-layout-data-png", Format::PagedLayoutDataXmlPng, "v5DebugPagedDataXML", "/PagedDataXML/R*.png"},
    {"raw-xml-png", Format::RawXmlPng, "v5DebugRawXml", "/R*.png"},
    {"xhtml-png", Format::XhtmlPng, "v5DebugXHTML", "/R*.png"},
    {"ctx-metadata", Format::CtxMetadataXml, "v5DebugCtxMetadata", "/CtxMetadata/R*.xml"},
    {"drill-through-targets", Format::AuthoredDThroughTargetsXml, "v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/R*.xml"},
    {"layout-data", Format::LayoutDataXml, "v5DebugDataXML", "/DataXML/R*.xml"},
    {"pdf", Format::Pdf, "v5DebugPDF", "/PDF/R*.pdf"},
    {"xlsx", Format::Xlsx, "v5DebugXLS2007", "/XLS2007/R*.xlsx"},
    {"single-xls", Format::SingleXls, "v5DebugSingleXLS", "/singleXLS/R*.html"},
    {"csv", Format::Csv, "v5DebugCSV", "/CSV/R*.csv"},
    {"json", Format::Json, "v5DebugJSON", "/JSON/R*.json"},
    {"csi", Format::Csi, "v5DebugROM", "/R*.csi"},
    {"di", Format::DiTree, "v5DebugDI", "/R*.di"},
    {"vmd", Format::Vmd, "v5DebugVMD", "/vmd/R*.vmd"},
};
// clang-format on

std::string report(const std::string& mode) {  // layout data and statistics, too
  return "<report xmlns='urn:r'>\n\nMapping Mode - " + mode + "\n</report>\n";
}

TEST(Formats, EveryFormatFindsAndComparesItsFiles) {
  const TestFolder folder;
  TestFolder::write("r.xsd",
                    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                    "targetNamespace='urn:r'><xs:element name='report'/></xs:schema>");
  ASSERT_EQ(OrvDiffFormats::all().size(), std::size(kRows));
  for (const Row& row : kRows) {
    const OrvDiffFormat* const format = OrvDiffFormats::find(row.name);
    ASSERT_NE(format, nullptr) << row.name;
    EXPECT_EQ(format->format, row.format) << row.name;
    EXPECT_EQ(format->needsArguments, row.outputs == std::string("given")) << row.name;
    const std::filesystem::path glob = "s/Masters/fr" + row.masters;
    std::vector<std::string> pairs;
    for (const std::string page : {"R", "R_1", "S"}) {
      const std::string name = "/" + page + glob.extension().string();
      const std::string master = glob.parent_path().string() + name;
      const std::string output = std::string("../webcontent/bi/") + row.outputs + "/fr" + name;
      TestFolder::write(master, report("a"));
      TestFolder::write(output, report(page == "R" ? "a" : "b"));
      pairs.push_back(master + " " + output);
    }
    Recorder recorder;
    format->createEngine({"fr", "given", nullptr, nullptr, "urn:r", "r.xsd"})
        ->verifyOutput({&recorder}, "s/R.xml", nullptr);
    const bool hasPages = row.masters.find('*') != std::string::npos;
    ASSERT_EQ(recorder.heard.size(), hasPages ? 2U : 1U) << row.name;
    const bool canPass = format->comparison != "external script";  // the script is the host's
    EXPECT_EQ(recorder.heard[0], (canPass ? "pass " : "diff ") + pairs[0]);
    if (hasPages) {
      EXPECT_THAT(recorder.heard[1], testing::HasSubstr(pairs[1]));
      EXPECT_THAT(recorder.heard[1], testing::Not(testing::StartsWith("pass")));
    }
  }
  EXPECT_EQ(OrvDiffFormats::find("HTML"), nullptr);
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

TEST(Formats, ChartGraphicsScriptsAreNeverTakenFromMemory) {
  const TestFolder folder;
  TestFolder::write("s/Masters/R.cgs", "text");
  OrvTestInfo info;
  info.addOutput("../webcontent/bi/d/R.cgs", false) << "text" << std::ends;
  Recorder recorder;
  OrvDiffCgsFileEngine engine(nullptr, "d", nullptr, nullptr);
  engine.verifyOutput({&recorder}, "s/R.xml", &info);
  TestFolder::write("../webcontent/bi/d/R.cgs", "text");
  engine.verifyOutput({&recorder}, "s/R.xml", &info);
  const std::string kNames = " s/Masters/R.cgs ../webcontent/bi/d/R.cgs";
  EXPECT_THAT(recorder.heard, testing::ElementsAre("missing" + kNames + " ../webcontent/bi/d/R.cgs",
                                                   "pass" + kNames));
}

}  // namespace

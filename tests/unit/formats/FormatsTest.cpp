#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "orvdiff/registry/OrvDiffEngineRegistry.h"
#include "tests/support/Testing.h"

namespace {

using Format = OrvOutputFormat;

enum Takes { kDisk, kMemory };

struct Row {
  const char* name;
  Format format;
  const char* outputs;
  std::string masters;  ///< after the master folder
  Takes takes;          ///< where an output may be for it to be compared
};

// clang-format off
const Row kRows[] = {
    {"nao", Format::Nao, "v5DebugNAO", "/R*.nao", kMemory},
    {"prompt-nao", Format::PromptNao, "v5DebugPromptNAO", "/PromptNAO/R*.nao", kMemory},
    {"cgs", Format::Cgs, "given", "/R*.cgs", kDisk},
    {"drilled-report-spec", Format::DrilledReportSpec, "v5DebugDrilledReportSpec", "/DrilledReportSpec/R*.xml", kMemory},
    {"ref-query-items", Format::RefQueryItem, "v5DebugRefQueryItems", "/RefQueryItems/R*.xml", kMemory},
    {"drill-up-down-state", Format::DrillUpDownState, "v5DebugDrilledUpDownState", "/DrilledUpDownState/R*.xml", kMemory},
    {"paged-layout-data", Format::PagedLayoutDataXml, "v5DebugPagedDataXML", "/PagedDataXML/R*.xml", kMemory},
    {"raw-xml", Format::RawXml, "v5DebugRawXml", "/RawXML/R*.xml", kMemory},
    {"mht", Format::Mht, "v5DebugMHT", "/R*.mht", kMemory},
    {"ra", Format::Ra, "v5DebugRA", "/R*.mht", kMemory},
    {"html", Format::Html, "v5DebugHTML", "/R*.html", kMemory},
    {"xhtml", Format::Xhtml, "v5DebugXHTML", "/R*.xml", kMemory},
    {"xml", Format::Xml, "v5DebugXML", "/XML/R*.xml", kMemory},
    {"viz", Format::Viz, "v5DebugViz", "/Viz/R*.xml", kMemory},
    {"xls", Format::Xls, "v5DebugXLS", "/XLS/R*.html", kMemory},
    {"xlwa", Format::Xlwa, "v5DebugXLWA", "/XLWA/R.mht", kMemory},
    {"prp", Format::Prp, "given", "/R*.prp", kMemory},
    {"html-png", Format::HtmlPng, "v5DebugHTML", "/R*.png", kMemory},
    {"layout-data-png", Format::LayoutDataXmlPng, "v5DebugDataXML", "/DataXML/R*.png", kMemory},
    {"paged-layout-data-png", Format::PagedLayoutDataXmlPng, "v5DebugPagedDataXML", "/PagedDataXML/R*.png", kMemory},
    {"raw-xml-png", Format::RawXmlPng, "v5DebugRawXml", "/R*.png", kMemory},
    {"xhtml-png", Format::XhtmlPng, "v5DebugXHTML", "/R*.png", kMemory},
    {"ctx-metadata", Format::CtxMetadataXml, "v5DebugCtxMetadata", "/CtxMetadata/R*.xml", kDisk},
    {"drill-through-targets", Format::AuthoredDThroughTargetsXml, "v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/R*.xml", kDisk},
    {"layout-data", Format::LayoutDataXml, "v5DebugDataXML", "/DataXML/R*.xml", kMemory},
    {"pdf", Format::Pdf, "v5DebugPDF", "/PDF/R*.pdf", kDisk},
    {"xlsx", Format::Xlsx, "v5DebugXLS2007", "/XLS2007/R*.xlsx", kDisk},
    {"single-xls", Format::SingleXls, "v5DebugSingleXLS", "/singleXLS/R*.html", kDisk},
    {"csv", Format::Csv, "v5DebugCSV", "/CSV/R*.csv", kDisk},
    {"json", Format::Json, "v5DebugJSON", "/JSON/R*.json", kDisk},
    {"csi", Format::Csi, "v5DebugROM", "/R*.csi", kDisk},
    {"di", Format::DiTree, "v5DebugDI", "/R*.di", kDisk},
    {"vmd", Format::Vmd, "v5DebugVMD", "/vmd/R*.vmd", kMemory},
};
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
    const OrvDiffFormat* const format = OrvDiffFormats::find(row.name);
    ASSERT_NE(format, nullptr) << row.name;
    EXPECT_EQ(format->format, row.format) << row.name;
    EXPECT_EQ(format->needsArguments, row.outputs == std::string("given")) << row.name;
    const std::filesystem::path glob = "s/Masters/fr" + row.masters;
    std::vector<OrvFilePair> pairs;
    for (const std::string page : {"R", "R_1", "S"}) {
      const std::string name = "/" + page + glob.extension().string();
      pairs.push_back({glob.parent_path().string() + name,
                       std::string("../webcontent/bi/") + row.outputs + "/fr" + name});
      TestFolder::write(pairs.back().master, report("a"));
      TestFolder::write(pairs.back().actual, report(page == "R" ? "a" : "b"));
    }
    Recorder recorder;
    const auto engine = format->createEngine({"fr", "given", nullptr, nullptr, "urn:r", "r.xsd"});
    engine->verifyOutput({&recorder}, "s/R.xml", nullptr);
    const bool hasPages = row.masters.find('*') != std::string::npos;
    ASSERT_EQ(recorder.heard.size(), hasPages ? 2U : 1U) << row.name;
    const std::string passes = format->comparison == "external script" ? "diff " : "pass ";
    EXPECT_EQ(recorder.heard[0], passes + pairs[0].master + " " + pairs[0].actual);
    if (hasPages) {
      EXPECT_THAT(recorder.heard[1], testing::HasSubstr(pairs[1].master + " " + pairs[1].actual));
      EXPECT_THAT(recorder.heard[1], testing::Not(testing::StartsWith("pass")));
    }
    std::filesystem::remove(pairs[0].actual);
    OrvTestInfo info;
    std::strstream& output = info.addOutput(pairs[0].actual, false);
    output << report("a") << std::ends;
    output.seekp(-1, std::ios::cur);  // ends the text, but does not belong to the bytes
    EXPECT_THAT(described(engine->comparePair(pairs[0], &info)),
                testing::StartsWith(row.takes == kMemory ? "pass" : "missing"))
        << row.name;
  }
  EXPECT_EQ(OrvDiffFormats::find("HTML"), nullptr);
}

/// A format that the library does not have.
class NotesEngine : public OrvDiffTextFormatEngine {
 public:
  explicit NotesEngine(const char* subFolder)
      : OrvDiffTextFormatEngine(subFolder, {"notes", "/Notes/", "*.txt"}) {
    addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
  }
};

constexpr OrvDiffFormat kNotes = {"notes", Format{1000}, "normalised text", false,
                                  OrvDiffFormat::create<NotesEngine>};

TEST(Formats, ANewOneIsASmallClassAndARow) {
  const TestFolder folder;
  TestFolder::write("s/Masters/Notes/R.txt", "<coord>1</coord>x");
  TestFolder::write("../webcontent/bi/notes/R.txt", "x<coord>2</coord>");
  const auto engine = kNotes.createEngine({});
  EXPECT_EQ(engine->getCleansingPatterns()->size(), 1U);
  Recorder recorder;
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(kNotes.format, engine.get());
  registry.addListener(&recorder);
  registry.verifyOutput(kNotes.format, "s/R.xml", nullptr);
  EXPECT_THAT(recorder.heard,
              testing::ElementsAre("pass s/Masters/Notes/R.txt ../webcontent/bi/notes/R.txt"));
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

const std::string kVmd = "Report\n\nMapping Mode - full\n";

TEST(Formats, DataAreComparedAsTheirFormatAsks) {
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
    EXPECT_THAT(described(engine->performDiff("gone", "a", nullptr)), "missing gone a gone");
  }
}

}  // namespace

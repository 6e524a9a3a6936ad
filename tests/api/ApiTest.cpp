#include "orvdiff/orvdiff.h"
#include "tests/support/Testing.h"

namespace {

/// Something that a host derives from a concrete class of the library.
template <typename Base>
struct Derived : Base {
  using Base::Base;
};

template <typename Base, typename... Arguments>
std::unique_ptr<Base> derive(Arguments&&... arguments) {
  return std::make_unique<Derived<Base>>(std::forward<Arguments>(arguments)...);
}

TEST(Api, ConcreteClassesCanBeDerivedFrom) {
  const TestFolder folder;
  derive<OrvDiffEngineRegistry>()->verifyOutput(OrvOutputFormat::Html, "R", nullptr);
  derive<OrvDiffLib>();
  derive<OrvFileHandle>("none", "r");
  derive<OrvDiffNormalizationPattern>("a", nullptr)->setReplacementText("b");
  derive<OrvDiffStreamLog>();
  derive<OrvDiffFileLog>("log");
  derive<OrvDiffLogNormalized>();
  derive<OrvTestInfo>()->addOutput("o", true);
  const std::unique_ptr<OrvDiffResult> results[] = {
      derive<OrvDiffResultPass>("m", "a"), derive<OrvDiffResultFail>("m", "a"),
      derive<OrvDiffResultFailDiff>("m", "a"),
      derive<OrvDiffResultFailDiffNormalized>("m", "a", nullptr, nullptr, 0U),
      derive<OrvDiffResultFailFileMissing>("m", "a", "a")};
  for (const auto& result : results) {
    result->notifyListener(*derive<OrvDiffListener>());
  }
  EXPECT_EQ(derive<OrvDiffHtmlFileEngine>("fr")->getMasterFileGlobExpression("R.xml"),
            "Masters/fr/R*.html");
  EXPECT_EQ(derive<OrvDiffRaFileEngine>("")->getOutputDirectoryTypeName(), "v5DebugRA");
  EXPECT_NE(dynamic_cast<OrvDiffTextFormatEngine*>(derive<OrvDiffXmlFileEngine>("").get()),
            nullptr);
}

/// A text engine of a host, with a pattern of the catalogue and one of its own.
class HostEngine : public OrvDiffTextFileTypeEngine {
 public:
  explicit HostEngine(const OrvDiffNormalizationPattern* own) : OrvDiffTextFileTypeEngine(nullptr) {
    addCleansingPattern(
        OrvDiffNormalizationPatterns::getPattern(OrvDiffNormalizationPatterns::eCoordsAttribute));
    addCleansingPattern(own);
  }
  std::string getOutputDirectoryTypeName() const override { return "host"; }
  std::string getMasterFileGlobExpression(const std::string& location) const override {
    return getMasterFileDirectory(location) + "/" + getReportName(location) + "*.host";
  }

 protected:
  bool doesFileExist(const std::string& path) const override {
    return path != "../webcontent/bi/host/R_2.host" && OrvDiffFileEngine::doesFileExist(path);
  }
};

TEST(Api, AHostsOwnEngineAndListener) {
  const TestFolder folder;
  for (const char* const name : {"R.host", "R_2.host"}) {
    TestFolder::write(std::string("s/Masters/") + name, "a coords=\"1\" 2024");
    TestFolder::write(std::string("../webcontent/bi/host/") + name, "a coords=\"2\" 2025");
  }
  const OrvDiffNormalizationPattern year("20[0-9]+", nullptr);
  HostEngine engine(&year);
  Recorder recorder;
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Csv, &engine);
  registry.addListener(&recorder);
  registry.verifyOutput(OrvOutputFormat::Csv, "s/R.xml", nullptr);
  const std::string kMissing = "../webcontent/bi/host/R_2.host";
  EXPECT_THAT(recorder.heard,
              testing::ElementsAre("pass s/Masters/R.host ../webcontent/bi/host/R.host",
                                   "missing s/Masters/R_2.host " + kMissing + " " + kMissing));
}

TEST(Api, EveryFormatVerifiesASuite) {
  const TestFolder folder;
  OrvDiffEngineRegistry registry;
  Recorder recorder;
  registry.addListener(&recorder);
  std::vector<std::unique_ptr<OrvDiffFileEngine>> engines;
  const char* const kEndings[] = {"cgs", "csi", "csv", "di",  "html", "json", "mht",
                                  "nao", "pdf", "png", "prp", "vmd",  "xlsx", "xml"};
  const auto report = [](const std::string& mode) {  // layout data and statistics, too
    return "<report xmlns='urn:r'>\n\nMapping Mode - " + mode + "\n</report>\n";
  };
  TestFolder::write("r.xsd",
                    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                    "targetNamespace='urn:r'><xs:element name='report'/></xs:schema>");
  const auto writeOutputs = [&](const std::string& text) {
    for (const auto& engine : engines) {
      for (const std::string ending : kEndings) {
        TestFolder::write(
            "../webcontent/bi/" + engine->getOutputDirectoryTypeName() + "/R." + ending, text);
      }
    }
  };
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    OrvFormatArguments arguments;
    arguments.outputDirectoryTypeName = "given";
    arguments.layoutNamespace = "urn:r";
    arguments.layoutSchema = "r.xsd";
    engines.push_back(format.createEngine(arguments));
    registry.registerDiffEngine(format.format, engines.back().get());
  }
  for (const std::string infix : {"",
                                  "PromptNAO/",
                                  "DrilledReportSpec/",
                                  "RefQueryItems/",
                                  "DrilledUpDownState/",
                                  "PagedDataXML/",
                                  "RawXML/",
                                  "XML/",
                                  "Viz/",
                                  "XLS/",
                                  "XLWA/",
                                  "DataXML/",
                                  "CtxMetadata/",
                                  "VirtualDThroughTargets/",
                                  "PDF/",
                                  "XLS2007/",
                                  "singleXLS/",
                                  "CSV/",
                                  "JSON/",
                                  "vmd/"}) {
    for (const char* const ending : kEndings) {
      TestFolder::write("s/Masters/" + infix + "R." + ending, report("a"));
    }
  }
  for (const bool passes : {true, false}) {
    writeOutputs(report(passes ? "a" : "b"));
    for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
      recorder.heard.clear();
      registry.verifyOutput(format.format, "s/R.xml", nullptr);
      ASSERT_EQ(recorder.heard.size(), 1U) << format.name;
      const bool canPass = format.comparison != "external script";  // the script is the host's
      EXPECT_EQ(recorder.heard[0].substr(0, 5) == "pass ", passes && canPass) << format.name;
    }
  }
}

TEST(Api, ErrorsCrossTheBorder) {
  EXPECT_THROW(OrvDiffLib::strdupnew(nullptr), VELAssertError);
  try {
    OrvDiffNormalizationPattern("(", nullptr);
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("VEL_ASSERT_NAMED(m_regEx, "));
  }
}

}  // namespace

#include "orvdiff/orvdiff.h"
#include "tests/support/Testing.h"

namespace {

/// Something that a host derives from a concrete class of the library.
template <typename Base>
struct Derived : Base {
  using Base::Base;
};

TEST(Api, ConcreteClassesCanBeDerivedFrom) {
  const TestFolder folder;
  Derived<OrvDiffEngineRegistry>().verifyOutput(OrvOutputFormat::Html, "R", nullptr);
  Derived<OrvDiffLib>();
  Derived<OrvFileHandle>("none", "r");
  Derived<OrvDiffNormalizationPattern>("a", nullptr).setReplacementText("b");
  Derived<OrvDiffStreamLog>();
  Derived<OrvDiffFileLog>("log");
  Derived<OrvDiffLogNormalized>();
  Derived<OrvTestInfo>().addOutput("o", true);
  Derived<OrvDiffListener> listener;
  Derived<OrvDiffResultPass>("m", "a").notifyListener(listener);
  Derived<OrvDiffResultFailDiffNormalized>("m", "a", nullptr, nullptr, 0U).notifyListener(listener);
  Derived<OrvDiffResultFailFileMissing>("m", "a", "a").notifyListener(listener);
  EXPECT_EQ(Derived<OrvDiffRaFileEngine>("").getMasterFileGlobExpression("R.xml"),
            "Masters/R*.mht");
  EXPECT_EQ(Derived<OrvDiffPdfFileEngine>("").getOutputDirectoryTypeName(), "v5DebugPDF");
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

}  // namespace

#include "HostClasses.h"
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

// Only `endScript` and the end of the process destroy the harness.
static_assert(!std::is_destructible_v<MOXTestHarness>);

struct CheckListener : OrvDiffMoxLog {
  void logCheck(const char* /*description*/, bool passed) override { lastPassed = passed; }
  MOXTestHarness* getHarness() override { return MOXTestHarness::getInstance(); }
  bool lastPassed = true;
};

TEST(Api, ALevelIsAVariableAndANumber) {
  MOXLogLevel level = MOXLogLevel::Normal;
  const std::int32_t number = level;
  EXPECT_EQ(number, 3);
  MOXTestHarness::getInstance()->setLogLevel(level);
  level = MOXLogLevel::None;
  EXPECT_EQ(MOXTestHarness::getInstance()->setLogLevel(level), MOXLogLevel::Normal);
  EXPECT_EQ(MOXLogLevel(17), 17);
}

TEST(Api, HostsMayRecordChecksThroughTheLog) {
  CheckListener listener;
  OrvDiffMoxLog& log = listener;
  log.logCheck("it", false);
  EXPECT_FALSE(listener.lastPassed);
  EXPECT_EQ(log.getHarness(), MOXTestHarness::getInstance());
}

TEST(OwnClassesOfAHost, NeverMeetOursInOneProcess) {
  const TestFolder folder;
  TestFolder::write("Masters/R.html", "page");
  const auto misuse = [] { OrvDiffLib::strdupnew(nullptr); };
  EXPECT_THROW(misuse(), VELAssertError);
  EXPECT_STREQ(outcomeForHost(misuse), "another error");
  EXPECT_STREQ(outcomeForHost(raiseErrorOfHost), "own error");
  try {
    raiseErrorOfHost();
  } catch (const VELThrowable&) {
    ADD_FAILURE() << "an error of the host was caught as one of ours";
  } catch (...) {
  }
  OrvTestInfo run;
  run.addOutput("../webcontent/bi/v5DebugHTML/R.html", false) << "page" << std::ends;
  OrvDiffHtmlFileEngine engine(nullptr);
  Recorder recorder;
  engine.verifyOutput({&recorder}, "R.xml", &run);
  EXPECT_EQ(recorder.heard,
            std::vector<std::string>{"pass Masters/R.html ../webcontent/bi/v5DebugHTML/R.html"});
  EXPECT_EQ(callsOfHost(), 0);
}

}  // namespace

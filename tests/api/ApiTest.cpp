#include "orvdiff/orvdiff.h"
#include "tests/support/Testing.h"

// Of HostClasses.cpp, where a host has its own classes by the names of ours.
bool raisesErrorOfHost(void (*action)());  ///< whether it raises the host's `VELThrowable`
void raiseErrorOfHost();                   ///< raises the host's `VELAssertError`
int callsOfHost();                         ///< how often services of the host were called

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
  EXPECT_FALSE(raisesErrorOfHost(misuse));
  EXPECT_TRUE(raisesErrorOfHost(raiseErrorOfHost));
  EXPECT_ANY_THROW(EXPECT_EQ(storyOf(raiseErrorOfHost), "not one of ours"));
  OrvTestInfo run;
  run.addOutput("../webcontent/bi/v5DebugHTML/R.html", false) << "page" << std::ends;
  OrvDiffHtmlFileEngine engine(nullptr);
  Recorder recorder;
  engine.verifyOutput({&recorder}, "R.xml", &run);
  EXPECT_THAT(recorder.heard,
              ElementsAre("pass Masters/R.html ../webcontent/bi/v5DebugHTML/R.html"));
  EXPECT_EQ(callsOfHost(), 0);
}

}  // namespace

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

// Hosts may record checks of their own through the log.
[[maybe_unused]] const auto kRecord = [](OrvDiffMoxLog& log) {
  log.logCheck("it", log.getHarness() != nullptr);
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

}  // namespace

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

}  // namespace

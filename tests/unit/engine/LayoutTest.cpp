#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

TEST(Layout, MastersAndOutputs) {
  const std::tuple<const char*, const char*, const char*, const char*, const char*> kRows[] = {
      {"s/t/R.xml", nullptr, "", "s/t/Masters/R*.pdf", "type"},
      {"s/t/R.xml", "", "_b", "s/t/Masters/R*.pdf", "type_b"},
      {"s/t/R.xml", "fr/x", "_b", "s/t/Masters/fr/x/R*.pdf", "type_b/fr/x"},
      {"R.xml", nullptr, "", "Masters/R*.pdf", "type"},
      {"/R.xml", "fr", "", "/Masters/fr/R*.pdf", "type/fr"},
      {"a.b/R.2024.xml", nullptr, "", "a.b/Masters/R.2024*.pdf", "type"},
  };
  for (const auto& [location, subFolder, suffix, glob, outputs] : kRows) {
    TestEngine engine(subFolder);
    engine.setMasterAndOutputFoldersSuffix("replaced");
    engine.setMasterAndOutputFoldersSuffix(suffix);
    EXPECT_EQ(engine.getMasterFileGlobExpression(location), glob);
    EXPECT_EQ(engine.getActualFile("any/where/R_2.pdf"),
              std::string("../webcontent/bi/") + outputs + "/R_2.pdf");
  }
}

}  // namespace

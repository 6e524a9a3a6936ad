#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

TEST(Layout, MastersAndOutputs) {
  const struct {
    const char* location;
    const char* subFolder;
    const char* suffix;
    const char* glob;
    const char* outputs;
  } kRows[] = {
      {"s/t/R.xml", nullptr, "", "s/t/Masters/R*.pdf", "type"},
      {"s/t/R.xml", "", "_b", "s/t/Masters/R*.pdf", "type_b"},
      {"s/t/R.xml", "fr", "", "s/t/Masters/fr/R*.pdf", "type/fr"},
      {"s/t/R.xml", "fr/x", "_b", "s/t/Masters/fr/x/R*.pdf", "type_b/fr/x"},
      {"R.xml", nullptr, "", "Masters/R*.pdf", "type"},
      {"/R.xml", "fr", "", "/Masters/fr/R*.pdf", "type/fr"},
      {"a.b/R.2024.xml", nullptr, "", "a.b/Masters/R.2024*.pdf", "type"},
  };
  for (const auto& row : kRows) {
    TestEngine engine(row.subFolder);
    engine.setMasterAndOutputFoldersSuffix("replaced");
    engine.setMasterAndOutputFoldersSuffix(row.suffix);
    EXPECT_EQ(engine.getMasterFileGlobExpression(row.location), row.glob);
    EXPECT_EQ(engine.getActualFile("any/where/R_2.pdf"),
              std::string("../webcontent/bi/") + row.outputs + "/R_2.pdf");
  }
}

}  // namespace

#include <stdexcept>

#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

using namespace std::string_literals;

const std::string kBi = "../webcontent/bi/type/";

/// Counts its objects.
struct CountedDiff : OrvDiffResultFailDiff {
  CountedDiff(const std::string& masterName, const std::string& actualName)
      : OrvDiffResultFailDiff(masterName, actualName) {
    ++created;
    ++living;
  }
  ~CountedDiff() override { --living; }
  static inline int created = 0;
  static inline int living = 0;
};

struct RaisingListener : OrvDiffListener {
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    if (result.getMasterName() == "Masters/R_1.pdf") {
      EXPECT_EQ(CountedDiff::living, 1);
      throw std::runtime_error("listener");
    }
  }
};

class Driver : public testing::Test {
 protected:
  Driver() {
    CountedDiff::created = 0;
    for (const char* const name : {"R_2.pdf", "R.pdf", "R_1.pdf", "R_0.pdf", "S.pdf", "R.txt"}) {
      TestFolder::write("Masters/"s + name, "");
      TestFolder::write(kBi + name, "");
    }
    std::filesystem::remove(kBi + "R_0.pdf");
    std::filesystem::remove(kBi + "S.pdf");
    std::filesystem::create_directory(kBi + "S.pdf");
  }
  ~Driver() override { EXPECT_EQ(CountedDiff::living, 0); }

  TestFolder m_folder;
  Recorder m_recorder;
  std::string m_compared;
  std::string m_raisesFor;
  TestEngine m_engine{nullptr, [this](const std::string& m, const std::string& a, auto*) {
                        m_compared += m.substr(8) + " ";
                        if (m == m_raisesFor) {
                          throw std::runtime_error("comparison");
                        }
                        return new CountedDiff(m, a);
                      }};
};

std::string missing(const std::string& name, const std::string& missing) {
  return "missing Masters/" + name + " " + kBi + name + " " + missing;
}

TEST_F(Driver, ComparesEachMasterWithItsOutputInOrderOfName) {
  Recorder second;
  m_engine.verifyOutput({&m_recorder, &second}, "R.xml", nullptr);
  const auto diff = [](const std::string& n) { return "diff Masters/" + n + " " + kBi + n; };
  EXPECT_THAT(m_recorder.heard, ElementsAre(diff("R.pdf"), missing("R_0.pdf", kBi + "R_0.pdf"),
                                            diff("R_1.pdf"), diff("R_2.pdf")));
  EXPECT_EQ(second.heard, m_recorder.heard);
  EXPECT_EQ(m_compared, "R.pdf R_1.pdf R_2.pdf ");
  std::vector<std::string> oneByOne;
  for (const OrvFilePair& pair : m_engine.findPairs("R.xml")) {
    oneByOne.push_back(described(m_engine.comparePair(pair, nullptr)));
  }
  EXPECT_EQ(oneByOne, m_recorder.heard);
  std::filesystem::create_symlink("nowhere", "Masters/T.pdf");  // reported before the output
  Recorder others;
  for (const char* const location : {"none/Unknown.xml", "S.xml", "T.xml"}) {
    m_engine.verifyOutput({&others}, location, nullptr);
  }
  EXPECT_THAT(others.heard, ElementsAre(missing("S.pdf", kBi + "S.pdf"),  // which is a folder
                                        missing("T.pdf", "Masters/T.pdf")));
}

TEST_F(Driver, AnExceptionEndsTheVerificationAndDeletesTheResult) {
  RaisingListener raising;
  EXPECT_THROW(m_engine.verifyOutput({&raising}, "R.xml", nullptr), std::runtime_error);
  EXPECT_EQ(m_compared, "R.pdf R_1.pdf ");
  EXPECT_THROW(m_engine.verifyOutput({nullptr, &m_recorder}, "R.xml", nullptr), VELAssertError);
  EXPECT_THAT(m_recorder.heard, ElementsAre());
  m_compared.clear();
  m_raisesFor = "Masters/R_1.pdf";
  EXPECT_THROW(m_engine.verifyOutput({&m_recorder}, "R.xml", nullptr), std::runtime_error);
  EXPECT_EQ(m_compared, "R.pdf R_1.pdf ");
  EXPECT_EQ(m_recorder.heard.size(), 2U);
  EXPECT_EQ(CountedDiff::created, 4);
}

TEST(Layout, MastersAndOutputs) {
  const std::tuple<const char*, const char*, const char*, const char*, const char*> kRows[] = {
      {"s/t/R.xml", "", "_b", "s/t/Masters/R*.pdf", "type_b/R_2.pdf"},
      {"s/t/R.xml", "fr/x", "_b", "s/t/Masters/fr/x/R*.pdf", "type_b/fr/x/R_2.pdf"},
      {"/R.xml", "fr", "", "/Masters/fr/R*.pdf", "type/fr/R_2.pdf"},
      {"R.2024.xml", nullptr, "", "Masters/R.2024*.pdf", "type/R_2.pdf"},
  };
  for (const auto& [location, subFolder, suffix, glob, output] : kRows) {
    TestEngine engine(subFolder);
    engine.setMasterAndOutputFoldersSuffix("replaced");
    engine.setMasterAndOutputFoldersSuffix(suffix);
    EXPECT_EQ(engine.getMasterFileGlobExpression(location), glob);
    EXPECT_EQ(engine.getActualFile("any/where/R_2.pdf"), "../webcontent/bi/"s + output);
  }
}

}  // namespace

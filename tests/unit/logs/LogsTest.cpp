#include "orvdiff/logs/OrvDiffFileLog.h"
#include "orvdiff/logs/OrvDiffLogNormalized.h"
#include "orvdiff/logs/OrvDiffStreamLog.h"
#include "tests/support/Testing.h"

namespace {

const std::string kStart = "<TestSummary>\n";
const std::string kEnd = "</TestSummary>\n";
const std::string kNotOpened =
    "OrvDiffStreamLog: VEL_ASSERT_NAMED(m_stream, \"Stream was not opened.\");";

/// A result of no more specific class.
class BareResult : public OrvDiffResult {
 public:
  BareResult() : OrvDiffResult("m", "a") {}
  void notifyListener(OrvDiffListener& listener) const override {
    listener.comparisonNotification(*this);
  }
  bool isPassed() const override { return false; }
};

std::string entry(const std::string& kind, const std::string& master, const std::string& actual) {
  return "<" + kind +
         "><ReturnCode>1</ReturnCode><Command/><ResultsFile/><StepNumber>0</StepNumber>"
         "<MasterFile>" +
         master + "</MasterFile><CurrentFile>" + actual + "</CurrentFile></" + kind + ">\n";
}

std::unique_ptr<OrvDiffResult> normalizedDiff(const char* actualName, const char* master,
                                              const char* actual) {
  return std::make_unique<OrvDiffResultFailDiffNormalized>("m", actualName, copyOf(master),
                                                           copyOf(actual), 0);
}

TEST(Logs, TheEntryOfEveryKindOfResult) {
  const TestFolder folder;
  const std::string kFailure = entry("TestCaseFailureDiff", "m", "a");
  const std::string kPass =
      entry("TestCasePassDiff", "r&amp;1", "&lt;&quot;r&apos;\xEF\xBF\xBD&gt;");
  const std::tuple<std::unique_ptr<OrvDiffResult>, std::string, std::string> kRows[] = {
      {std::make_unique<OrvDiffResultPass>("r&1", "<\"r'\xE9>"), kPass, kPass},
      {std::make_unique<OrvDiffResultFailDiff>("m", "a"), kFailure, kFailure},
      {normalizedDiff("a", "x", "y"), kFailure, kFailure},
      {std::make_unique<OrvDiffResultFailFileMissing>("m", "a", "a"), kFailure, kFailure},
      {std::make_unique<OrvDiffResultFail>("m", "a"), kFailure, ""},
      {std::make_unique<BareResult>(), "", ""},
  };
  OrvDiffStreamLog streamLog;
  for (const auto& [result, inStream, inFile] : kRows) {
    std::ostringstream stream;
    streamLog.open(&stream);
    EXPECT_EQ(raisedBy([&] { streamLog.open(&std::cout); }),
              "OrvDiffStreamLog: VEL_ASSERT_NAMED(!m_stream, \"Log is already opened.\");");
    result->notifyListener(streamLog);
    streamLog.close();
    EXPECT_EQ(stream.str(), kStart + inStream + kEnd);
    TestFolder::write("summary", "from before, and longer than what is written now");
    {
      OrvDiffFileLog fileLog("summary");
      result->notifyListener(fileLog);
      EXPECT_EQ(TestFolder::read("summary"), kStart + inFile);
    }
    EXPECT_EQ(TestFolder::read("summary"), kStart + inFile + kEnd);
  }
  EXPECT_EQ(raisedBy([&] { streamLog.open(nullptr); }), "OrvDiffStreamLog: VEL_ASSERT(stream);");
  EXPECT_EQ(raisedBy([&] { streamLog.close(); }), kNotOpened);
  EXPECT_EQ(raisedBy([&] { OrvDiffResultPass("m", "a").notifyListener(streamLog); }), kNotOpened);
  EXPECT_EQ(raisedBy([&] { BareResult().notifyListener(streamLog); }), "nothing");
  std::ostringstream unfinished;
  std::make_unique<OrvDiffStreamLog>()->open(&unfinished);
  EXPECT_EQ(unfinished.str(), kStart);
}

TEST(LogNormalized, KeepsBothTextsBesideTheActualOutput) {
  const TestFolder folder;
  TestFolder::write("out/r.html", "");
  TestFolder::write("out/r.html.normalized_master", "from before, and longer");
  OrvDiffLogNormalized log;
  for (const char* const text : {"same \xC3\xA9\xE9\r\n", ""}) {
    normalizedDiff("out/r.html", text, *text != '\0' ? "x" : nullptr)->notifyListener(log);
    EXPECT_EQ(TestFolder::read("out/r.html.normalized_master"), text);
    EXPECT_EQ(TestFolder::read("out/r.html.normalized_actual"), *text != '\0' ? "x" : "");
  }
  OrvDiffResultFailDiff("m", "p").notifyListener(log);
  OrvDiffResultFailFileMissing("m", "p", "m").notifyListener(log);
  EXPECT_FALSE(std::filesystem::exists("p.normalized_master"));
}

TEST(Logs, AFailingDiskIsNobodysError) {
  const TestFolder folder;
  TestFolder::write("full.normalized_master", "from before");
  const OrvDiffResultPass pass("m", "a");
  for (const char* const name : {"/dev/full", "none/summary", "."}) {
    OrvDiffFileLog log(name);
    EXPECT_EQ(raisedBy([&] { pass.notifyListener(log); }), "nothing");
  }
  const std::string kText(10000, 'x');
  for (const char* const name : {"full", "none/r.html"}) {
    OrvDiffLogNormalized log;
    const LimitedTo fullDisk(RLIMIT_FSIZE, 5000);
    normalizedDiff(name, kText.c_str(), "y")->notifyListener(log);
  }
  EXPECT_EQ(TestFolder::read("full.normalized_master"), "(missing)");
  EXPECT_EQ(TestFolder::read("full.normalized_actual"), "y");
}

}  // namespace

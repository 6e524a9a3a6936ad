#include "orvdiff/bridges/OrvDiffGoogleTestListener.h"

#include <gtest/gtest-spi.h>

#include "orvdiff/formats/OrvDiffDataEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "tests/support/Testing.h"

namespace {

/// What `action` has GoogleTest report: each failure as "file:line: message".
template <typename Action>
std::vector<std::string> failuresOf(const Action& action) {
  testing::TestPartResultArray parts;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &parts);
    action();
  }
  std::vector<std::string> failures;
  for (int i = 0; i < parts.size(); ++i) {
    const testing::TestPartResult& part = parts.GetTestPartResult(i);
    const std::string message = part.message();
    if (part.nonfatally_failed()) {
      failures.push_back(part.file_name() + (":" + std::to_string(part.line_number()) + ": ") +
                         message.substr(message.find('\n') + 1));
    }
  }
  return failures;
}

class OwnEngine : public OrvDiffTextFormatEngine {
 public:
  OwnEngine() : OrvDiffTextFormatEngine(nullptr, {"own", "/", "*.log"}) {
    addCleansingPattern(&m_digits);
  }

 private:
  const OrvDiffNormalizationPattern m_digits{"\\d+", "n"};
};

}  // namespace

TEST(GoogleTestListener, FailureTellsTheLineAndWhereTheTextsBeginToDiffer) {
  using namespace std::string_literals;
  OrvDiffHtmlFileEngine html(nullptr);
  OrvDiffPrpFileEngine prp(nullptr, "prompts", nullptr);
  OrvDiffCgsFileEngine cgs(nullptr, "charts", nullptr, nullptr);
  OrvDiffCsvFileEngine csv(nullptr);
  OrvDiffVmdFileEngine vmd(nullptr);
  OwnEngine own;
  const std::string page = "v5DebugHTML/R.html";
  const std::string masks = "\n<script>1</script>\n<p id=\"a\">";
  const std::string words = "ten to thirty words and a lot of characters, ";
  const struct {
    OrvDiffFileEngine& engine;
    std::string output, masterText, outputText;
    const char *line, *shown;  // null: it passes
  } cases[] = {
      {html, page, "1", "1", nullptr, nullptr},
      // Lines are those of the files, texts those that were compared.
      {html, page, "1" + masks + "12</p>", "1" + masks + "\r\n\r\n<p>21",
       ":5: ", "\n  3 - 1<p>12</p>\n  5 + 1<p><p>21\n          ^"},
      {cgs, "charts/R.cgs", "chart_tmp_1\nb", "\nc", ":2: ", "\n  2 - b\n  2 + c\n      ^"},
      // A format of the host's own: its rules are not known, only what they left.
      {own, "own/R.log", "1\na2b", "34\na5c", ":-1: ", "\n   - anb\n   + anc\n       ^"},
      {own, page, "a1", "b2", ":-1: ", "\n   - an\n   + bn\n     ^"},  // as HTML it is another text
      {prp, "prompts/R.prp", "1\r\n2\n3", "1\n2\n4", ":3: ", "\n  3 - 3\n  3 + 4\n      ^"},
      {csv, "v5DebugCSV/R.csv", "1\r\n2", "1\n2", ":1: ", "\n  1 - 1\\r\n  1 + 1\\n\n       ^"},
      {csv, "v5DebugCSV/R.csv", "1\0a"s, "1\0b"s, ":-1: ", "\n  at byte 2, counted from 0"},
      {vmd, "v5DebugVMD/R.vmd", "a\nb\nc\n", "1\nb\nc\n", ":-1: ", ""},  // not by its lines
      // Long lines are cut, and characters are whole, visible and as wide as they are.
      {csv, "v5DebugCSV/R.csv", words + "x" + words, words + "y" + words, ":1: ",
       "\n  1 - …ords and a lot of characters, xten to thirty words and a lot…"
       "\n  1 + …ords and a lot of characters, yten to thirty words and a lot…"
       "\n                                     ^"},
      {csv, "v5DebugCSV/R.csv", "\xe5\x80\xa4\xc3\xa4", "\xe5\x80\xa4\xc3\xb6",
       ":1: ", "\n  1 - \xe5\x80\xa4\xc3\xa4\n  1 + \xe5\x80\xa4\xc3\xb6\n        ^"},
      {csv, "v5DebugCSV/R.csv", "\x1b\\ \xc2\xa0", "\x1b\\ \xe9\t\xe2\x80\xae",
       ":1: ", "\n  1 - \\x1B\\\\ \\u{00A0}\n  1 + \\x1B\\\\ \\xE9\\t\\u{202E}\n             ^"},
      {csv, "v5DebugCSV/R.csv", "a\nb", "a\n",
       ":2: ", "\n  2 - b\n  2 + [end of the text]\n      ^"},
  };
  const TestFolder folder;
  for (const auto& each : cases) {
    const OrvFilePair pair = {"Masters/R", "../webcontent/bi/" + each.output};
    TestFolder::write(pair.master, each.masterText);
    TestFolder::write(pair.actual, each.outputText);
    const std::unique_ptr<OrvDiffResult> result(each.engine.comparePair(pair, nullptr));
    const auto failures = failuresOf([&] {
      OrvDiffGoogleTestListener listener;
      result->notifyListener(listener);
      EXPECT_EQ(listener.pairs(), 1U);
    });
    if (each.line == nullptr) {
      EXPECT_THAT(failures, ElementsAre());
    } else {
      EXPECT_THAT(failures, ElementsAre(pair.actual + each.line + pair.actual +
                                        " differs from its master Masters/R" + each.shown));
    }
  }
}

TEST(GoogleTestListener, WhateverWasNotComparedFails) {
  const struct {
    std::unique_ptr<OrvDiffResult> result;
    const char* failure;
  } cases[] = {
      {std::make_unique<OrvDiffResultFailFileMissing>("m", "a\n", "a\n"),
       "a\\n:-1: a\\n does not exist or cannot be opened; it is the output to compare with m"},
      {std::make_unique<OrvDiffResultFailFileMissing>("m", "a", "m"),
       "m:-1: m does not exist or cannot be opened; it is the master of a"},
      {std::make_unique<OrvDiffResultPassUpToNul>("m", "a", "m"),
       "a:-1: a matches its master m only up to a NUL byte in m; what follows it was not compared"},
      {std::make_unique<OrvDiffResultFail>("a", "a"),
       "a:-1: a is not a valid document of its format; standard output has the parser's message"},
      {std::make_unique<OrvDiffResultFail>("m", "a"),
       "a:-1: a failed the comparison with its master m"},
      {std::make_unique<OrvDiffResultFailDiff>("gone", "gone too"),
       "gone too:-1: gone too differs from its master gone"},
      {std::make_unique<OrvDiffResultFailDiffNormalized>("m", "a", nullptr, nullptr, 0),
       "a:-1: a differs from its master m"},
  };
  for (const auto& each : cases) {
    EXPECT_THAT(failuresOf([&] {
                  OrvDiffGoogleTestListener listener;
                  each.result->notifyListener(listener);
                }),
                ElementsAre(each.failure));
  }
  EXPECT_THAT(failuresOf([] { OrvDiffGoogleTestListener(); }),
              ElementsAre(HasSubstr("orvdiff compared nothing")));
  try {
    const OrvDiffGoogleTestListener stopped;  // says enough by its exception
    throw 1;
  } catch (int) {
  }
}

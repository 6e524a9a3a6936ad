#include "orvdiff/formats/OrvDiffScriptEngines.h"
#include "tests/support/Testing.h"

namespace {

/// Puts a "python" of the test's own first on the search path: it writes its arguments to the file
/// "arguments", one a line, and then does what `body` says.
class FakePython {
 public:
  explicit FakePython(const std::string& body) {
    std::filesystem::remove("arguments");
    TestFolder::write("bin/python", "#!/bin/sh\nprintf '%s\\n' \"$@\" > arguments\n" + body + "\n");
    std::filesystem::permissions("bin/python", std::filesystem::perms::owner_all);
    setenv("PATH", (std::filesystem::current_path() / "bin:").concat(m_before).c_str(), 1);
  }
  ~FakePython() { setenv("PATH", m_before.c_str(), 1); }
  FakePython(const FakePython&) = delete;
  FakePython& operator=(const FakePython&) = delete;

 private:
  const std::string m_before = getenv("PATH");
};

TEST(ScriptEngines, TheExitStatusIsTheVerdict) {
  const TestFolder folder;
  OrvDiffPdfFileEngine pdf(nullptr);
  for (const char* const body : {"exit 1", "kill -9 $$", "chmod -x bin/python; exec bin/python"}) {
    const FakePython python(body);
    EXPECT_EQ(compared(pdf, "", ""), "diff m a") << body;
  }
  const FakePython python("exit 0");
  setenv("PATH", "/nowhere", 1);
  EXPECT_EQ(compared(pdf, "", ""), "diff m a");
}

TEST(ScriptEngines, RunTheScriptOnTwoQuotedNames) {
  const TestFolder folder;
  const FakePython python("test \"$(readlink /proc/self/fd/0)\" = /dev/null");  // cannot ask
  const std::string m = "m 1/R;x.pdf";
  const std::string a = "a's (&) *";
  TestFolder::write(m, "");
  TestFolder::write(a, "");
  EXPECT_EQ(described(OrvDiffPdfFileEngine(nullptr).performDiff(m, a, nullptr)),
            "pass " + m + " " + a);
  EXPECT_EQ(TestFolder::read("arguments"),
            "../../src/vask/testdata/Scripts/diffpdf/diffPdfFiles.py\n" + m + "\n" + a + "\n");
  EXPECT_FALSE(std::filesystem::exists("../temp"));
  described(OrvDiffXlsxFileEngine(nullptr).performDiff(a, m, nullptr));
  EXPECT_EQ(TestFolder::read("arguments"),
            "../../src/vask/testdata/Scripts/DiffXlsx/DiffXlsx.py\n-o\n"
            "../temp/vask/testResults/DiffXlsx.mxr\n" +
                a + "\n" + m + "\n");
  EXPECT_TRUE(std::filesystem::is_directory("../temp/vask/testResults"));
}

TEST(ScriptEngines, ANameNeverBecomesACommandAndAMissingFileNoRun) {
  const TestFolder folder;
  const FakePython python("exit 0");
  TestFolder::write("m", "");
  OrvDiffPdfFileEngine pdf(nullptr);
  for (const std::string name : {"a\" \"b", "$HOME", "`touch ran`", "a\\\\b", "a\nb"}) {
    TestFolder::write(name, "");
    EXPECT_EQ(described(pdf.performDiff("m", name, nullptr)), "diff m " + name);
    EXPECT_EQ(described(pdf.performDiff(name, "m", nullptr)), "diff " + name + " m");
  }
  std::strstream memory;
  OrvDiffXlsxFileEngine xlsx(nullptr);
  EXPECT_EQ(described(pdf.performDiff("gone", "gone too", &memory)), "missing gone gone too gone");
  EXPECT_EQ(described(xlsx.performDiff("m", "gone", &memory)), "missing m gone gone");
  EXPECT_EQ(TestFolder::read("arguments"), "(missing)");
  EXPECT_EQ(TestFolder::read("ran"), "(missing)");
  EXPECT_FALSE(std::filesystem::exists("../temp"));
  xlsx.setMasterAndOutputFoldersSuffix("_b");  // moves the masters of spreadsheets too
  EXPECT_EQ(xlsx.getMasterPattern("s/R.xml"), "s/Masters/XLS2007_b/R*.xlsx");
}

}  // namespace

#include "orvdiff/formats/OrvDiffFormats.h"
#include "tests/support/Testing.h"

namespace {

const std::string kVmd = "Report\n\nMapping Mode - full\n";

TEST(DataEngines, CompareAsTheirFormatAsks) {
  const std::tuple<const char*, std::string, std::string, const char*> kRows[] = {
      {"csv", "a,b\n", "a,b\r\n", "diff m a"},
      {"csv", std::string("a\0b", 3), std::string("a\0c", 3), "diff m a"},
      {"json", R"({"a":1,"b":2})", R"({"b":2,"a":1})", "diff m a"},
      {"csi", "a\nb", "a\r\nb", "pass m a"},
      {"di", "a\r\rb", "ab", "pass m a"},
      {"di", "<script></script>a", "a", "diff m a"},
      {"single-xls", "<script>1</script>a\r\n", "<script>2</script>a\n", "pass m a"},
      {"single-xls", R"(<img src="../x/v1/c.png">)", R"(<img src="../y/v1/c.png">)", "pass m a"},
      {"single-xls", "<script>1</script>ab", "ac", "normalized m a at 1 ab|ac"},
      {"vmd", kVmd, kVmd + "Total Objects with reference count > 0 : 0\n", "pass m a"},
      {"vmd", kVmd, kVmd.substr(0, kVmd.size() - 1), "diff m a"},
  };
  const TestFolder folder;
  for (const auto& [format, master, actual, verdict] : kRows) {
    TestFolder::write("m", master);
    TestFolder::write("a", actual);
    const auto engine = OrvDiffFormats::find(format)->createEngine({});
    EXPECT_EQ(described(engine->performDiff("m", "a", nullptr)), verdict)
        << format << ": " << master << " against " << actual;
  }
}

TEST(DataEngines, OnlyVmdTakesOutputsFromMemory) {
  const TestFolder folder;
  TestFolder::write("m", kVmd);
  for (const char* const format : {"csv", "json", "csi", "di", "single-xls", "vmd"}) {
    const auto engine = OrvDiffFormats::find(format)->createEngine({});
    std::strstream memory;
    memory << kVmd << std::ends;
    const bool usesMemory = format == std::string("vmd");
    EXPECT_EQ(described(engine->performDiff("m", "gone", &memory)),
              usesMemory ? "pass m gone" : "missing m gone gone")
        << format;
    EXPECT_EQ(described(engine->performDiff("gone", "m", &memory)), "missing gone m gone");
  }
}

}  // namespace

#include "cli/workers/ComparisonNotes.h"

#include "orvdiff/formats/OrvDiffFormats.h"
#include "tests/support/Testing.h"

namespace {

/// The record of comparing two files as `format`; `afterwards` happens before the notes are used.
PairRecord noted(
    const char* format, const std::string& master, const std::string& output,
    const std::function<void()>& afterwards = [] {}) {
  TestFolder::write("m", master);
  TestFolder::write("a", output);
  const auto engine = OrvDiffFormats::find(format)->createEngine({});
  const ComparisonNotes notes({"m", "a"});
  const std::unique_ptr<const OrvDiffResult> result(engine->performDiff("m", "a", nullptr));
  afterwards();
  PairRecord record;
  notes.addTo(record);
  return record;
}

TEST(ComparisonNotes, TellWhatWasComparedAndByWhichRules) {
  const TestFolder folder;
  const std::string large(200'000, 'x');
  struct Row {
    const char* format;
    std::string master;
    std::string output;
    std::optional<std::string> masterText;
    std::optional<std::string> outputText;
    std::vector<std::string> rules;
  };
  const std::vector<Row> rows = {
      {"html", "", "", {}, {}, {}},
      {"html", large, large, {}, {}, {}},
      {"html", large + 'a', large + 'b', large + 'a', large + 'b', {}},
      {"html", "<p>a", "<p>a\r", "<p>a", "<p>a", {"CarriageReturn"}},
      {"html", "a\n<script>1</script>", "a\n", "a", "a", {"LineBreak", "ScriptElement"}},
      {"html", "a\nb", "a\nc", "ab", "ac", {"LineBreak"}},
      {"html", std::string("a\0b\n", 4), std::string("a\0c\n", 4), "a", "a", {}},
      {"csi", "a\r\n", "a\n", "a\n", "a\n", {"CarriageReturn"}},
      {"csv", large, large, {}, {}, {}},
      {"csv", large, large + 'x', {}, {}, {}},
      {"vmd", "1\n2\n3", "1\n2\n4", {}, {}, {}},
  };
  for (const Row& row : rows) {
    const PairRecord record = noted(row.format, row.master, row.output);
    const auto hashOf = [](const auto& text) { return text ? contentHash(*text) : ""; };
    EXPECT_EQ(record.masterFile.size, row.master.size());
    EXPECT_EQ(record.outputFile.size, row.output.size());
    EXPECT_EQ(record.masterFile.hash, contentHash(row.master));
    EXPECT_EQ(record.outputFile.hash, contentHash(row.output));
    EXPECT_EQ(record.masterFile.normalizedHash, hashOf(row.masterText)) << row.master;
    EXPECT_EQ(record.outputFile.normalizedHash, hashOf(row.outputText)) << row.output;
    EXPECT_EQ(record.rules, row.rules) << row.master;
  }
}

TEST(ComparisonNotes, AreOfTheBytesThatWereCompared) {
  const TestFolder folder;
  const auto change = [] { TestFolder::write("a", "changed"); };
  EXPECT_EQ(noted("html", "<p>a", "<p>b", change).outputFile.hash, contentHash("<p>b"));
  EXPECT_EQ(noted("html", "same", "same", change).outputFile.hash, contentHash("same"));
  const FileFacts facts =
      noted("csv", "a", "b", change).outputFile;  // they are not read to the end
  EXPECT_EQ(facts.hash, "");
  EXPECT_THAT(facts.evidence, HasSubstr("changed during the comparison"));
}

TEST(ComparisonNotes, PathsAreAbsoluteAndWithoutLinks) {
  const TestFolder folder;
  const std::string work = std::filesystem::canonical(".");
  TestFolder::write("real/m", "x");
  std::filesystem::create_directory_symlink("real", "linked");
  std::filesystem::create_symlink("real/m", "link");
  for (const auto& [path, expected] : std::vector<std::pair<std::string, std::string>>{
           {"linked/../m", ""}, {"linked/m", work + "/real/m"}, {"link", work + "/real/m"}}) {
    const ComparisonNotes notes({path, path});
    PairRecord record;
    notes.addTo(record);
    EXPECT_EQ(record.masterPath, expected);
  }
}

}  // namespace

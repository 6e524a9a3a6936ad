#include "orvdiff/formats/OrvDiffFormats.h"

#include <regex>
#include <set>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/PlainNormalizer.h"
#include "tests/support/Testing.h"

namespace {

using Patterns = OrvDiffNormalizationPatterns;

/// A row of the table in docs/formats.md, which says what users rely on.
struct Row {
  std::string name, outputs, masters, comparison, patterns, takes;
};

std::vector<Row> documentedFormats() {
  const std::regex kRow(
      R"(\| `(.*?)` \| `?(.*?)`? \| `Masters(.*?)REPORT(.*?)` \| (.*?) \| (.*?) \| (.*?) \|)");
  std::ifstream page(ORVDIFF_FORMATS_PAGE);
  std::vector<Row> rows;
  std::smatch cell;
  for (std::string line; std::getline(page, line);) {
    if (std::regex_match(line, cell, kRow)) {
      rows.push_back({cell[1], cell[2] == "given by the host" ? "given" : cell.str(2),
                      cell.str(3) + "R" + cell.str(4), cell[5], cell[6], cell[7]});
    }
  }
  return rows;
}

std::string report(const std::string& mode) {  // also layout data and statistics
  return "<report xmlns='urn:r'>\n\nMapping Mode - " + mode + "\n</report>\n";
}

TEST(Formats, EachFindsAndComparesItsFiles) {
  const TestFolder folder;
  TestFolder::write("r.xsd",
                    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                    "targetNamespace='urn:r'><xs:element name='report'/></xs:schema>");
  const std::vector<Row> rows = documentedFormats();
  ASSERT_EQ(OrvDiffFormats::all().size(), rows.size());
  std::set<OrvOutputFormat> values;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const OrvDiffFormat* const format = OrvDiffFormats::find(row.name);
    ASSERT_NE(format, nullptr);
    EXPECT_TRUE(values.insert(format->format).second) << "two formats of one value";
    EXPECT_EQ(format->needsArguments, row.outputs == "given");
    EXPECT_EQ(format->comparison, row.comparison);
    const std::filesystem::path glob = "s/Masters/fr" + row.masters;
    std::vector<OrvFilePair> pairs;
    for (const std::string page : {"R", "R_1", "S"}) {
      const std::string name = "/" + page + glob.extension().string();
      pairs.push_back(
          {glob.parent_path().string() + name, "../webcontent/bi/" + row.outputs + "/fr" + name});
      TestFolder::write(pairs.back().master, report("a"));
      TestFolder::write(pairs.back().actual, report(page == "R" ? "a" : "b"));
    }
    Recorder recorder;
    const auto engine = format->createEngine({"fr", "given", nullptr, nullptr, "urn:r", "r.xsd"});
    engine->verifyOutput({&recorder}, "s/R.xml", nullptr);
    const bool hasPages = row.masters.find('*') != std::string::npos;
    ASSERT_EQ(recorder.heard.size(), hasPages ? 2U : 1U);
    const std::string passes = row.comparison == "external script" ? "diff " : "pass ";
    EXPECT_EQ(recorder.heard[0], passes + pairs[0].master + " " + pairs[0].actual);
    if (hasPages) {
      EXPECT_THAT(recorder.heard[1], HasSubstr(pairs[1].master + " " + pairs[1].actual));
      EXPECT_THAT(recorder.heard[1], Not(StartsWith("pass")));
    }
    std::filesystem::remove(pairs[0].actual);
    OrvTestInfo info;
    std::strstream& output = info.addOutput(pairs[0].actual, false);
    output << report("a") << std::ends;
    output.seekp(-1, std::ios::cur);  // ends the text, but does not belong to the bytes
    EXPECT_THAT(described(engine->comparePair(pairs[0], &info)),
                StartsWith(row.takes == "either" ? "pass" : "missing"));
  }
  EXPECT_EQ(OrvDiffFormats::find("HTML"), nullptr);
}

TEST(TextEngines, ApplyTheirListsInOrder) {
  const TestFolder folder;
  const std::string text = R"(<script></script> coords="1" <coord></coord> chart_tmp_1)";
  for (const Row& row : documentedFormats()) {
    SCOPED_TRACE(row.name);
    const auto engine = OrvDiffFormats::find(row.name)->createEngine({nullptr, "given"});
    const OrvPatternList* const held = engine->getCleansingPatterns();
    const OrvPatternList patterns = held != nullptr ? *held : OrvPatternList();
    std::string names;
    for (const OrvDiffNormalizationPattern* const pattern : patterns) {
      names += (names.empty() ? "`" : ", `") + std::string(Patterns::getName(*pattern)) + "`";
    }
    EXPECT_EQ(names.empty() ? "none" : names, row.patterns);
    if (row.comparison == "normalised text" || row.comparison == "text, carriage returns aside") {
      const std::string expected = normalizePlainly(text, patterns);
      EXPECT_EQ(expected == text, patterns.empty());
      EXPECT_EQ(compared(*engine, text + "\r", "$"),
                patterns.empty() ? "diff m a" : "normalized m a at 0 " + expected + "|$");
    }
  }
  struct Engine : OrvDiffXmlFileEngine {
    Engine() : OrvDiffXmlFileEngine(nullptr) { addCleansingPattern(nullptr); }
  };
  EXPECT_EQ(storyOf([] { Engine(); }),
            "VEL_ASSERT(pattern); [OrvDiffTextFileTypeEngine:68, VEL_THROW]");
}

TEST(TextEngines, TheLastOneReleasesTheCatalogue) {
  const TestFolder folder;
  auto engine = OrvDiffFormats::find("html")->createEngine({});
  OrvSharedPatternList held;  // keeps the pattern's address from being used again
  held.add(Patterns::getPattern(Patterns::eScriptElement));
  OrvDiffFormats::find("nao")->createEngine({});  // gone at once, and with it what nobody holds
  EXPECT_EQ(compared(*engine, "<script>x</script>", "<script>y</script>"), "pass m a");
  engine.reset();
  EXPECT_NE(Patterns::getPattern(Patterns::eScriptElement), held.list().front());
}

TEST(Formats, FurtherArgumentsOfCgsAndPrp) {
  std::string copied = "S";
  OrvDiffCgsFileEngine both("fr", copied.c_str(), copied.c_str(), "X");
  OrvDiffCgsFileEngine suffix(nullptr, "d", "", "X");
  OrvDiffPrpFileEngine subFolder("fr", copied.c_str(), copied.c_str());
  copied = "?";
  EXPECT_EQ(both.getMasterFileGlobExpression("s/R.xml"), "s/Masters/fr/S/R*_X.cgs");
  EXPECT_EQ(suffix.getMasterFileGlobExpression("s/R.xml"), "s/Masters/R*_X.cgs");
  EXPECT_EQ(subFolder.getMasterFileGlobExpression("s/R.xml"), "s/Masters/fr/S/R*.prp");
  EXPECT_EQ(both.getOutputDirectoryTypeName() + subFolder.getOutputDirectoryTypeName(), "SS");
  EXPECT_THROW(OrvDiffCgsFileEngine(nullptr, nullptr, "S", "X"), VELAssertError);
  EXPECT_THROW(OrvDiffPrpFileEngine(nullptr, nullptr, "S"), VELAssertError);
}

TEST(Formats, DataAreComparedAsTheirFormatAsks) {
  const std::string kVmd = "Report\n\nMapping Mode - full\n";
  const std::tuple<const char*, std::string, std::string, const char*> kComparisons[] = {
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
  for (const auto& [format, master, actual, verdict] : kComparisons) {
    const auto engine = OrvDiffFormats::find(format)->createEngine({});
    EXPECT_EQ(compared(*engine, master, actual), verdict)
        << format << ": " << master << " against " << actual;
    EXPECT_EQ(described(engine->performDiff("gone", "a", nullptr)), "missing gone a gone");
  }
}

}  // namespace

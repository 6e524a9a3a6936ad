#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Testing.h"

namespace {

const std::string kNamespace = "urn:layout";
const std::string kPath = "my schemas/l.xsd";
const std::string kCell = R"(<xs:complexType name="cell" mixed="true"><xs:choice minOccurs="0">
  <xs:element name="coord"/><xs:element name="filename"/></xs:choice></xs:complexType>)";

std::string schema(const std::string& contents, const std::string& ns = kNamespace) {
  return R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified")"
         " targetNamespace='" +
         ns + "' xmlns='" + ns + "'>" + contents + "</xs:schema>";
}

const std::string kLayout = R"(<xs:element name="layout"><xs:complexType><xs:sequence>
  <xs:element name="cell" type="cell" maxOccurs="2"/></xs:sequence></xs:complexType></xs:element>)";
const std::string kSchema = schema(kCell + kLayout);

std::string layout(const std::string& contents, const std::string& ns = kNamespace) {
  return "<layout xmlns='" + ns + "'>" + contents + "</layout>";
}

const std::string kValid = layout("<cell/>");

/// What comes of comparing `actual` with `master`, and what is printed.
class LayoutDataEngine : public testing::Test {
 protected:
  LayoutDataEngine() { TestFolder::write(kPath, kSchema); }

  std::string compared(const std::string& actual, const std::string& master = "no master") {
    const CapturedOutput output;
    std::string result = ::compared(m_engine, master, actual);
    m_printed = output.text();
    return result;
  }

  struct Engine : OrvDiffLayoutDataXmlFileEngine {
    using OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine;
    using OrvDiffTextFileTypeEngine::addCleansingPatterns;
  };

  const TestFolder m_folder;
  std::string m_printed;
  Engine m_engine{nullptr, kNamespace.c_str(), kPath.c_str()};
};

TEST_F(LayoutDataEngine, ComparesWhatIsValidWithFurtherPatterns) {
  const std::string valid = layout("<cell>x<coord>1</coord></cell>");
  EXPECT_EQ(compared(valid, layout("<cell>x<filename>f</filename></cell>")), "pass m a");
  EXPECT_THAT(compared(valid, layout("<cell>y</cell>")), StartsWith("normalized m a at "));
  EXPECT_EQ(m_printed, "");
  EXPECT_EQ(described(m_engine.performDiff("gone", "a", nullptr)), "missing gone a gone");
  EXPECT_EQ(described(m_engine.performDiff("m", "gone", nullptr)), "missing gone gone gone");
  const OrvDiffNormalizationPattern letters("[xy]", nullptr);
  m_engine.addCleansingPattern(&letters);
  m_engine.addCleansingPatterns({OrvDiffNormalizationPatterns::eDecimalNumber});  // the same list
  EXPECT_EQ(compared(valid, layout("<cell>y1.5</cell>")), "pass m a");
  EXPECT_EQ(m_engine.getCleansingPatterns()->size(), 4U);
  EXPECT_EQ(storyOf([&] { m_engine.addCleansingPattern(nullptr); }),
            "VEL_ASSERT(pattern); [OrvDiffLayoutDataXmlFileEngine:107, VEL_THROW]");
}

TEST_F(LayoutDataEngine, RefusesWhatIsNot) {
  TestFolder::write("other.xsd", schema(kCell + kLayout, "urn:other"));
  const std::string kHint = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:";
  const std::pair<std::string, const char*> kRows[] = {
      {layout("<cell/>", "urn:other"), "no declaration found for element 'layout'"},
      {layout("<cell/>", "urn:other'" + kHint + "schemaLocation='urn:other other.xsd"),
       "no declaration found for element 'layout'"},
      {layout("<zell/>"), "no declaration found for element 'zell'"},
      {layout("<cell/><cell/><cell/>"), "element 'cell' is not allowed"},
  };
  for (const auto& [document, message] : kRows) {
    EXPECT_EQ(compared(document, document), "fail a a") << document;
    EXPECT_THAT(m_printed, HasSubstr(message)) << document;
    EXPECT_THAT(m_printed, Not(HasSubstr("l.xsd"))) << "the schema is fine";
    EXPECT_EQ(compared(kValid, kValid), "pass m a");
  }
  std::strstream memory;  // is what is validated where there is one
  memory << layout("<zell/>") << std::ends;
  const CapturedOutput output;
  EXPECT_EQ(described(m_engine.performDiff("m", "a", &memory)), "fail a a");
  std::strstream valid;
  valid << layout("<cell>\r\n</cell>") << std::ends;
  TestFolder::write("m", layout("<cell>\n</cell>"));
  EXPECT_EQ(described(m_engine.performDiff("m", "gone", &valid)), "pass m gone");
}

TEST_F(LayoutDataEngine, NamesASchemaThatCannotBeUsed) {
  const std::pair<std::string, const char*> kRows[] = {
      {"", "invalid document structure"},
      {kSchema.substr(0, kSchema.size() - 5), "expected end of tag"},
      {schema(kCell + kLayout + "<xs:element name='z' type='nope'/>"), "type 'urn:layout:nope'"},
      {schema(kCell + kLayout, "urn:other"), "it does not describe the namespace urn:layout"},
      {"<a/>", "root element name of XML Schema document"},
      {"(missing)", "the file cannot be opened\n++++"},
  };
  const std::string foreign = layout("<cell/>", "urn:other");
  for (const auto& [text, reason] : kRows) {
    TestFolder::write(kPath, text);
    if (text == "(missing)") {
      std::filesystem::remove(kPath);
    }
    for (int i = 0; i < 2; ++i) {  // the part that could be read must not serve the next document
      EXPECT_EQ(compared(kValid, kValid), "fail a a") << reason;
      EXPECT_THAT(m_printed, StartsWith("Schema my schemas/l.xsd cannot be "));
      EXPECT_THAT(m_printed, HasSubstr(reason));
      EXPECT_EQ(compared(foreign, foreign), "fail a a") << reason;
    }
  }
  TestFolder::write("my schemas/http:/host.invalid/far.xsd", "what an address must not open");
  TestFolder::write("my schemas/parts/cell.xsd", schema(kCell));  // repaired, of two files
  TestFolder::write(kPath,
                    schema("<xs:include schemaLocation='parts/cell.xsd'/><xs:import "
                           "namespace='urn:far' schemaLocation='http://host.invalid/far.xsd'/>" +
                           kLayout));
  EXPECT_EQ(compared(kValid, kValid), "pass m a");
  TestFolder::write(kPath, "no longer a schema");  // nor read again
  EXPECT_EQ(compared(kValid, kValid), "pass m a");
  EXPECT_EQ(compared(layout("<zell/>")), "fail a a");
}

TEST_F(LayoutDataEngine, LooksWhereItIsDeployed) {
  const std::string ns = "http://" ORV_LAYOUT_NAMESPACE_HOST "/xmlns/prod/tarsa/layoutData/201310";
  TestFolder::write("there.xsd", schema(kCell + kLayout, ns));
  TestFolder::write("a", layout("<cell/>", ns));
  OrvFormatArguments arguments;
  const auto verdict = [&arguments] {
    const auto engine = OrvDiffFormats::find("layout-data")->createEngine(arguments);
    return described(engine->performDiff("a", "a", nullptr));
  };
  const CapturedOutput output;
  EXPECT_EQ(verdict(), "fail a a");
  EXPECT_THAT(output.text(), HasSubstr(ORV_LAYOUT_SCHEMA_DIR "/layoutDataXMLV3.xsd"));
  arguments.layoutSchema = "there.xsd";
  EXPECT_EQ(verdict(), "pass a a");
}

}  // namespace

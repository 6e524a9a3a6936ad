#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"

#include <optional>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryOutput.h"
#include "orvdiff/formats/XmlFault.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

// The places that this engine's errors name; hosts rely on the lines.
constexpr const char* kUnit = "OrvDiffLayoutDataXmlFileEngine";
constexpr VELPlace kNullPatternPlace = {kUnit, 107};
constexpr VELPlace kNoVerdictPlace = {kUnit, 119};
constexpr int kTextTooLongLine = 164;

constexpr const char* kNamespaceUri =
    "http://" ORV_LAYOUT_NAMESPACE_HOST "/xmlns/prod/tarsa/layoutData/201310";
constexpr const char* kSchemaPath = ORV_LAYOUT_SCHEMA_DIR "/layoutDataXMLV3.xsd";

}  // namespace

OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine(const char* subFolder)
    : OrvDiffLayoutDataXmlFileEngine(subFolder, nullptr, nullptr) {}

OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine(const char* subFolder,
                                                               const char* namespaceUri,
                                                               const char* schemaPath)
    : OrvDiffLayoutDataXmlFileEngine(subFolder, namespaceUri, schemaPath,
                                     {OrvDiffNormalizationPatterns::eCoordElement,
                                      OrvDiffNormalizationPatterns::eFilenameElement}) {}

OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine(
    const char* subFolder, const char* namespaceUri, const char* schemaPath,
    std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum> patterns)
    : OrvFixedLayoutEngine(subFolder, {"v5DebugDataXML", "/DataXML/", "*.xml"}),
      m_namespaceUri(namespaceUri != nullptr ? namespaceUri : kNamespaceUri),
      m_schemaPath(schemaPath != nullptr ? schemaPath : kSchemaPath) {
  addCleansingPatterns(patterns);
}

OrvDiffLayoutDataXmlFileEngine::~OrvDiffLayoutDataXmlFileEngine() = default;

void OrvDiffLayoutDataXmlFileEngine::addCleansingPattern(
    const OrvDiffNormalizationPattern* pattern) {
  VEL_ASSERT_AT(pattern, kNullPatternPlace);
  OrvDiffTextFileTypeEngine::addCleansingPattern(pattern);
}

OrvDiffResult* OrvDiffLayoutDataXmlFileEngine::performDiff(const std::string& masterName,
                                                           const std::string& actualName,
                                                           std::strstream* inMemoryOutput) {
  std::optional<InMemoryOutput> output;
  if (inMemoryOutput != nullptr) {
    output.emplace(*inMemoryOutput);
  }
  const char* const text = output ? output->text() : nullptr;
  std::unique_ptr<OrvDiffResult> result(performSchemaValidation(actualName, text));
  VEL_ASSERT_AT(result, kNoVerdictPlace);
  if (!result->isPassed()) {
    return result.release();
  }
  return OrvDiffLib::textFileComparison(masterName, actualName, *getCleansingPatterns(), false,
                                        text);
}

OrvDiffResult* OrvDiffLayoutDataXmlFileEngine::performSchemaValidation(const std::string& fileName,
                                                                       const char* inMemoryText) {
  OrvDiffResult* const fault =
      findXmlFault(m_parser, XmlDocumentKind::LayoutData, fileName, inMemoryText,
                   [this](const char* text, std::uint64_t length) {
                     const std::uint32_t checkedLength =
                         VELDowncastSize::uint32(length, kUnit, kTextTooLongLine);
                     m_parser->loadSchema(m_schemaPath, m_namespaceUri);
                     m_parser->parseText(text, checkedLength);
                   });
  return fault != nullptr ? fault : velNew<OrvDiffResultPass>(VEL_HERE, fileName, fileName);
}

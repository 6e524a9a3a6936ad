#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"

#include <optional>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryOutput.h"
#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"
#include "orvdiff/platform/VELFmFile.h"
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

class DataXmlErrorHandler : public XmlErrorHandler {};

DataXmlErrorHandler s_dataXmlErrorHandler;

}  // namespace

OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine(const char* subFolder)
    : OrvDiffLayoutDataXmlFileEngine(subFolder, nullptr, nullptr) {}

OrvDiffLayoutDataXmlFileEngine::OrvDiffLayoutDataXmlFileEngine(const char* subFolder,
                                                               const char* namespaceUri,
                                                               const char* schemaPath)
    : OrvFixedLayoutEngine(subFolder, {"v5DebugDataXML", "/DataXML/", "*.xml"}),
      m_namespaceUri(namespaceUri != nullptr ? namespaceUri : kNamespaceUri),
      m_schemaPath(schemaPath != nullptr ? schemaPath : kSchemaPath),
      m_parser(DOM_ParserImpl::create(s_dataXmlErrorHandler, DOM_ParserImpl::Val_Always)) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement,
                        OrvDiffNormalizationPatterns::eFilenameElement});
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
  OrvDiffResult* const fault = findXmlFault(
      m_parser, fileName, inMemoryText, [this](const char* text, std::uint64_t length) {
        const std::uint32_t checkedLength =
            VELDowncastSize::uint32(length, kUnit, kTextTooLongLine);
        guardXmlMemory(VEL_HERE, [this] { loadSchema(); });
        m_parser->parseText(text, checkedLength);
      });
  return fault != nullptr ? fault : velNew<OrvDiffResultPass>(VEL_HERE, fileName, fileName);
}

void OrvDiffLayoutDataXmlFileEngine::loadSchema() {
  if (m_parser->getExternalSchemaLocation() != nullptr) {
    return;
  }
  VELFmFile file;
  if (file.open(m_schemaPath.c_str(), VELFmFile::eOpenExisting, 1) == 0) {
    reportUnusableSchema("the file cannot be opened");
    return;  // without a grammar, the document's first element is an error
  }
  const auto text = velNewArray<char>(VEL_HERE, file.getLength());
  const std::size_t length = file.read(text.get(), file.getLength());
  if (file.hasFailed()) {
    reportUnusableSchema("the file cannot be read to its end");
    return;
  }
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.get()), length,
                                          m_schemaPath.c_str(), false);
  const xercesc::Grammar* grammar = nullptr;
  try {
    grammar = m_parser->loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true);
  } catch (const xercesc::SAXParseException& exception) {
    reportUnusableSchema(narrowXmlText(exception.getMessage()));
    throw;
  }
  if (grammar == nullptr || narrowXmlText(grammar->getTargetNamespace()) != m_namespaceUri) {
    reportUnusableSchema("it does not describe the namespace " + m_namespaceUri);
    return;
  }
  // Validates every document against the schema, whatever its root element. The grammar is loaded
  // by now, so nothing opens the path; it must only be free of blanks.
  const std::string location = m_namespaceUri + " layoutData.xsd";
  m_parser->setExternalSchemaLocation(
      xercesc::TranscodeFromStr(reinterpret_cast<const XMLByte*>(location.c_str()), location.size(),
                                "UTF-8")
          .str());
}

void OrvDiffLayoutDataXmlFileEngine::reportUnusableSchema(const std::string& reason) {
  m_parser->resetCachedGrammarPool();  // or what was read so far would pass for the whole schema
  printXmlFailure("Layout-data schema " + m_schemaPath + " cannot be used: " + reason);
}

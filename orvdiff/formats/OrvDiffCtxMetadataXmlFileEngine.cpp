#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"

#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/VELDowncastSize.h"

namespace {

class CtxMetadataXmlErrorHandler : public XmlErrorHandler {};

CtxMetadataXmlErrorHandler s_ctxMetadataXmlErrorHandler;

}  // namespace

OrvDiffCtxMetadataXmlFileEngine::OrvDiffCtxMetadataXmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugCtxMetadata", "/CtxMetadata/", "*.xml"}),
      m_parser(DOM_ParserImpl::create(s_ctxMetadataXmlErrorHandler, DOM_ParserImpl::Val_Never)) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffCtxMetadataXmlFileEngine::~OrvDiffCtxMetadataXmlFileEngine() = default;

OrvDiffResult* OrvDiffCtxMetadataXmlFileEngine::performDiff(const std::string& masterName,
                                                            const std::string& actualName,
                                                            std::strstream* inMemoryOutput) {
  OrvDiffResult* const fault = performCtxValidation(actualName);
  if (fault != nullptr) {
    return fault;
  }
  return OrvDiffTextFormatEngine::performDiff(masterName, actualName, inMemoryOutput);
}

OrvDiffResult* OrvDiffCtxMetadataXmlFileEngine::performCtxValidation(const std::string& fileName) {
  return findXmlFault(m_parser, fileName, nullptr, [this](const char* text, std::uint64_t length) {
    m_parser->parseText(text,
                        VELDowncastSize::uint32(length, "OrvDiffCtxMetadataXmlFileEngine", 139));
  });
}

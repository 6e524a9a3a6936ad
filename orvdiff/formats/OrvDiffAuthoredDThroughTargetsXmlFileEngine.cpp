#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"

#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/VELDowncastSize.h"

namespace {

class AuthoredDThroughTargetsXmlErrorHandler : public XmlErrorHandler {};

AuthoredDThroughTargetsXmlErrorHandler s_authoredDThroughTargetsXmlErrorHandler;

}  // namespace

OrvDiffAuthoredDThroughTargetsXmlFileEngine::OrvDiffAuthoredDThroughTargetsXmlFileEngine(
    const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder,
                              {"v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/", "*.xml"}),
      m_parser(DOM_ParserImpl::create(s_authoredDThroughTargetsXmlErrorHandler,
                                      DOM_ParserImpl::Val_Never)) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffAuthoredDThroughTargetsXmlFileEngine::~OrvDiffAuthoredDThroughTargetsXmlFileEngine() =
    default;

OrvDiffResult* OrvDiffAuthoredDThroughTargetsXmlFileEngine::performDiff(
    const std::string& masterName, const std::string& actualName, std::strstream* inMemoryOutput) {
  OrvDiffResult* const fault = performAuthoredDThroughTargetsValidation(actualName);
  if (fault != nullptr) {
    return fault;
  }
  return OrvDiffTextFormatEngine::performDiff(masterName, actualName, inMemoryOutput);
}

OrvDiffResult*
OrvDiffAuthoredDThroughTargetsXmlFileEngine::performAuthoredDThroughTargetsValidation(
    const std::string& fileName) {
  return findXmlFault(m_parser, fileName, nullptr, [this](const char* text, std::uint64_t length) {
    m_parser->parseText(
        text, VELDowncastSize::uint32(length, "OrvDiffAuthoredDThroughTargetsXmlFileEngine", 139));
  });
}

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"

#include "orvdiff/formats/XmlValidation.h"

namespace {

class AuthoredDThroughTargetsXmlErrorHandler : public XmlErrorHandler {};

AuthoredDThroughTargetsXmlErrorHandler s_authoredDThroughTargetsXmlErrorHandler;

}  // namespace

OrvDiffAuthoredDThroughTargetsXmlFileEngine::OrvDiffAuthoredDThroughTargetsXmlFileEngine(
    const char* subFolder)
    : OrvDiffWellFormedXmlFileEngine(
          subFolder, {"v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/", "*.xml"},
          "OrvDiffAuthoredDThroughTargetsXmlFileEngine", s_authoredDThroughTargetsXmlErrorHandler) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffAuthoredDThroughTargetsXmlFileEngine::~OrvDiffAuthoredDThroughTargetsXmlFileEngine() =
    default;

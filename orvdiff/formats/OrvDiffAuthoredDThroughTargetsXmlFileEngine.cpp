#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"

#include "orvdiff/formats/XmlModule.h"

OrvDiffAuthoredDThroughTargetsXmlFileEngine::OrvDiffAuthoredDThroughTargetsXmlFileEngine(
    const char* subFolder)
    : OrvDiffWellFormedXmlFileEngine(
          subFolder, {"v5DebugVirtualDrillTargets", "/VirtualDThroughTargets/", "*.xml"},
          "OrvDiffAuthoredDThroughTargetsXmlFileEngine", XmlDocumentKind::AuthoredDThroughTargets) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffAuthoredDThroughTargetsXmlFileEngine::~OrvDiffAuthoredDThroughTargetsXmlFileEngine() =
    default;

#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"

#include "orvdiff/formats/XmlModule.h"

OrvDiffCtxMetadataXmlFileEngine::OrvDiffCtxMetadataXmlFileEngine(const char* subFolder)
    : OrvDiffWellFormedXmlFileEngine(subFolder, {"v5DebugCtxMetadata", "/CtxMetadata/", "*.xml"},
                                     "OrvDiffCtxMetadataXmlFileEngine",
                                     XmlDocumentKind::CtxMetadata) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffCtxMetadataXmlFileEngine::~OrvDiffCtxMetadataXmlFileEngine() = default;

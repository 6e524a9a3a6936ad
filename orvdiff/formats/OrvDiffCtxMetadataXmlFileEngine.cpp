#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"

#include "orvdiff/formats/XmlValidation.h"

namespace {

class CtxMetadataXmlErrorHandler : public XmlErrorHandler {};

CtxMetadataXmlErrorHandler s_ctxMetadataXmlErrorHandler;

}  // namespace

OrvDiffCtxMetadataXmlFileEngine::OrvDiffCtxMetadataXmlFileEngine(const char* subFolder)
    : OrvDiffWellFormedXmlFileEngine(subFolder, {"v5DebugCtxMetadata", "/CtxMetadata/", "*.xml"},
                                     "OrvDiffCtxMetadataXmlFileEngine",
                                     s_ctxMetadataXmlErrorHandler) {
  addCleansingPatterns({OrvDiffNormalizationPatterns::eCoordElement});
}

OrvDiffCtxMetadataXmlFileEngine::~OrvDiffCtxMetadataXmlFileEngine() = default;

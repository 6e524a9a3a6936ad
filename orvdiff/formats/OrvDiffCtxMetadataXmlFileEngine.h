#pragma once

#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Context metadata.
class ORVDIFF_API OrvDiffCtxMetadataXmlFileEngine : public OrvDiffWellFormedXmlFileEngine {
 public:
  explicit OrvDiffCtxMetadataXmlFileEngine(const char* subFolder);
  ~OrvDiffCtxMetadataXmlFileEngine() override;
};

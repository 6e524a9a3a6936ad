#pragma once

#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Authored drill-through targets.
class ORVDIFF_API OrvDiffAuthoredDThroughTargetsXmlFileEngine
    : public OrvDiffWellFormedXmlFileEngine {
 public:
  explicit OrvDiffAuthoredDThroughTargetsXmlFileEngine(const char* subFolder);
  ~OrvDiffAuthoredDThroughTargetsXmlFileEngine() override;
};

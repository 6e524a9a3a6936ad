#pragma once

#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Saves the two normalised texts of every normalised difference beside the actual output, as its
/// name + ".normalized_master" and ".normalized_actual", replacing earlier files. Failure to write
/// is not reported and leaves no partial file. For the process's one verifying thread.
class ORVDIFF_API OrvDiffLogNormalized : public OrvDiffListener {
 public:
  OrvDiffLogNormalized();
  ~OrvDiffLogNormalized() override;

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;

 private:
  void writeNormalizedFile(const std::string& baseName, const char* suffix, const char* contents);
};

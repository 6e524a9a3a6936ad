#pragma once

#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Keeps what was compared: for every normalised difference the two normalised texts, beside the
/// actual output, as its name + ".normalized_master" and ".normalized_actual". Earlier files of
/// these names are replaced. Failure to write is not reported, and leaves no half of a file.
class ORVDIFF_API OrvDiffLogNormalized : public OrvDiffListener {
 public:
  OrvDiffLogNormalized();
  ~OrvDiffLogNormalized() override;

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;

 private:
  void writeNormalizedFile(const std::string& baseName, const char* suffix, const char* contents);
};

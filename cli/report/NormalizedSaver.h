#pragma once

#include <string>
#include <vector>

#include "orvdiff/registry/OrvDiffListener.h"

/// Saves the normalised texts of differences under the names that `OrvDiffLogNormalized` gives
/// them, each whole or not at all. The names follow from the output's, so a link that stands there
/// is none that the user has chosen: it is replaced, not followed.
class NormalizedSaver : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;

  /// The files that could not be saved.
  const std::vector<std::string>& unsavedFiles() const { return m_unsavedFiles; }

 private:
  void save(const std::string& fileName, const char* text);

  std::vector<std::string> m_unsavedFiles;
};

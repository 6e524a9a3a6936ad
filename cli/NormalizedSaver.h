#pragma once

#include <string>
#include <vector>

#include "orvdiff/logs/OrvDiffLogNormalized.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Saves the normalised texts of differences, and looks whether they are there afterwards: the log
/// that writes them is silent when a folder cannot be written to or a disk is full.
class NormalizedSaver : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;

  /// The files that do not hold what they should.
  const std::vector<std::string>& unsavedFiles() const { return m_unsavedFiles; }

 private:
  void check(const std::string& fileName, const char* text);

  OrvDiffLogNormalized m_log;
  std::vector<std::string> m_unsavedFiles;
};

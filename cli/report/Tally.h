#pragma once

#include <cstddef>

#include "orvdiff/registry/OrvDiffListener.h"

/// Counts outcomes.
class Tally : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override;
  void comparisonNotification(const OrvDiffResultFailDiff& result) override;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  void comparisonNotification(const OrvDiffResultFail& result) override;

  std::size_t pairs() const { return passed + partly + differ + missing + failed; }

  std::size_t passed = 0;
  std::size_t partly = 0;  ///< passed as far as they were compared, which is no pass
  std::size_t differ = 0;
  std::size_t missing = 0;
  std::size_t failed = 0;  ///< neither a difference nor a missing file
};

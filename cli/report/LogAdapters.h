#pragma once

#include "orvdiff/registry/OrvDiffListener.h"

/// Stands before a log that knows passes and failures only: there, a pair of which not all was
/// compared goes as a failure.
class StrictPasses : public OrvDiffListener {
 public:
  /// `log` must outlive the adapter.
  explicit StrictPasses(OrvDiffListener& log) : m_log(log) {}

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override;
  void comparisonNotification(const OrvDiffResult& result) override;

 private:
  OrvDiffListener& m_log;
};

/// Stands before the harness log, which writes names as they are: escapes what they hold of control
/// characters, and says of a pair of which not all was compared that it failed, and why.
class HarnessResults : public OrvDiffListener {
 public:
  /// `log` must outlive the adapter.
  explicit HarnessResults(OrvDiffListener& log) : m_log(log) {}

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override;
  void comparisonNotification(const OrvDiffResultFail& result) override;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;

 private:
  OrvDiffListener& m_log;
};

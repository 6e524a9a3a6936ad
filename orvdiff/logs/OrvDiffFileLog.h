#pragma once

#include <fstream>

#include "orvdiff/logs/OrvDiffStreamLog.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Records outcomes as a test summary in a file of its own, from construction to destruction.
///
/// Failure to create or write the file is not reported. A plain failure (neither a difference nor a
/// missing file) gets no entry here. For the process's one verifying thread.
class ORVDIFF_API OrvDiffFileLog : public OrvDiffListener {
 public:
  /// Creates or truncates `fileName` and starts the summary in it.
  explicit OrvDiffFileLog(const char* fileName);
  /// Ends the summary and closes the file; never throws.
  ~OrvDiffFileLog() override;

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  void comparisonNotification(const OrvDiffResultFailDiff& result) override;
  void comparisonNotification(const OrvDiffResultPass& result) override;

 private:
  std::ofstream m_file;
  OrvDiffStreamLog m_streamLog;
};

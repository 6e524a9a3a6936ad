#pragma once

#include "orvdiff/harness/MOXTestHarness.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Turns every comparison result into a check of a test script.
///
/// Each result becomes one `logCheck` call whose description says what was expected. A failure
/// after normalisation also writes a headline and a dump of the normalised texts around their first
/// difference to the harness's log; the dump's offsets are positions in those texts.
///
/// Threads: verifications run on one thread, but a host may pass on results of its own from others
/// if its `logCheck` allows that. Headline and dump are written under the harness's output lock.
class ORVDIFF_API OrvDiffMoxLog : public OrvDiffListener {
 public:
  ~OrvDiffMoxLog() override;

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  /// Raises `VELAssertError` when the harness or one of the texts is null, or when the position
  /// does not fit 32 bits; the check has been recorded by then.
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;
  void comparisonNotification(const OrvDiffResult& result) override;

  /// Records one check. The subclass counts it and writes its line, for example with
  /// `MOXTestHarness::logCheckPass`. `description` lives only during the call.
  virtual void logCheck(const char* description, bool passed) = 0;

  /// The harness that dumps go to; not null. Usually `MOXTestHarness::getInstance()`.
  virtual MOXTestHarness* getHarness() = 0;

 protected:
  OrvDiffMoxLog();
};

#pragma once

#include "orvdiff/harness/MOXTestHarness.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Turns every comparison result into a check of a test script.
///
/// Each result becomes one `logCheck` call whose description says what was expected to hold. A
/// failure after normalisation also writes a headline and a dump of the normalised texts around
/// their first difference into the harness's log, so the dump's offsets are positions in those
/// texts. Results may be delivered on several threads if the subclass's `logCheck` allows it;
/// headline and dump stay together.
class ORVDIFF_API OrvDiffMoxLog : public OrvDiffListener {
 public:
  ~OrvDiffMoxLog() override;

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  /// Raises `VELAssertError` when the harness or one of the texts is null, or when the position
  /// does not fit 32 bits; the check has been recorded by then.
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;
  void comparisonNotification(const OrvDiffResult& result) override;

 protected:
  OrvDiffMoxLog();

  /// Records one check. Counting it and writing its line is the subclass's business, for example
  /// with `MOXTestHarness::logCheckPass`. `description` lives only during the call.
  virtual void logCheck(const char* description, bool passed) = 0;

  /// The harness that dumps go to; not null. Usually `MOXTestHarness::getInstance()`.
  virtual MOXTestHarness* getHarness() = 0;
};

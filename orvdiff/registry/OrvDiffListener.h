#pragma once

#include "orvdiff/orvdiff_export.h"

class OrvDiffResult;
class OrvDiffResultFail;
class OrvDiffResultFailDiff;
class OrvDiffResultFailDiffNormalized;
class OrvDiffResultFailFileMissing;
class OrvDiffResultPass;

/// Notified of every comparison.
///
/// Each compared pair causes exactly one call: of the `comparisonNotification` that takes the
/// result's own class. Every default body passes the result on to the overload for the parent
/// class, so a listener overrides only the levels it cares about; one that overrides nothing
/// ignores every result. Calls come on the verifying thread, in the order of the comparisons. The
/// result lives only during the call. An exception ends the verification and reaches the host.
class ORVDIFF_API OrvDiffListener {
 public:
  OrvDiffListener();
  OrvDiffListener(const OrvDiffListener&) = delete;
  OrvDiffListener& operator=(const OrvDiffListener&) = delete;
  virtual ~OrvDiffListener();

  /// Tells of a result of this class, or of a class derived from it whose own overload is not
  /// overridden.
  virtual void comparisonNotification(const OrvDiffResultFailFileMissing& result);
  virtual void comparisonNotification(const OrvDiffResultFailDiffNormalized& result);
  virtual void comparisonNotification(const OrvDiffResultFailDiff& result);
  virtual void comparisonNotification(const OrvDiffResultFail& result);
  virtual void comparisonNotification(const OrvDiffResultPass& result);
  virtual void comparisonNotification(const OrvDiffResult& result);
};

#pragma once

#include "orvdiff/orvdiff_export.h"

class OrvDiffResult;
class OrvDiffResultFail;
class OrvDiffResultFailDiff;
class OrvDiffResultFailDiffNormalized;
class OrvDiffResultFailFileMissing;
class OrvDiffResultPass;

/// Hears of every comparison.
///
/// For each compared pair exactly one `comparisonNotification` is called from outside: the one for
/// the result's own class. Each default body hands the result on to the overload of the parent
/// class, so a listener overrides only the levels it cares about; one that overrides nothing
/// ignores every result. Calls come on the thread that verifies, in the order of the comparisons.
/// The result lives only during the call. An exception ends the verification and reaches the host.
class ORVDIFF_API OrvDiffListener {
 public:
  OrvDiffListener();
  OrvDiffListener(const OrvDiffListener&) = delete;
  OrvDiffListener& operator=(const OrvDiffListener&) = delete;
  virtual ~OrvDiffListener();

  virtual void comparisonNotification(const OrvDiffResultFailFileMissing& result);
  virtual void comparisonNotification(const OrvDiffResultFailDiffNormalized& result);
  virtual void comparisonNotification(const OrvDiffResultFailDiff& result);
  virtual void comparisonNotification(const OrvDiffResultFail& result);
  virtual void comparisonNotification(const OrvDiffResultPass& result);
  virtual void comparisonNotification(const OrvDiffResult& result);
};

#include "orvdiff/registry/OrvDiffListener.h"

#include "orvdiff/registry/OrvDiffResult.h"

OrvDiffListener::OrvDiffListener() = default;
OrvDiffListener::~OrvDiffListener() = default;

void OrvDiffListener::comparisonNotification(const OrvDiffResultFailFileMissing& result) {
  comparisonNotification(static_cast<const OrvDiffResultFail&>(result));
}

void OrvDiffListener::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  comparisonNotification(static_cast<const OrvDiffResultFailDiff&>(result));
}

void OrvDiffListener::comparisonNotification(const OrvDiffResultFailDiff& result) {
  comparisonNotification(static_cast<const OrvDiffResultFail&>(result));
}

void OrvDiffListener::comparisonNotification(const OrvDiffResultFail& result) {
  comparisonNotification(static_cast<const OrvDiffResult&>(result));
}

void OrvDiffListener::comparisonNotification(const OrvDiffResultPass& result) {
  comparisonNotification(static_cast<const OrvDiffResult&>(result));
}

void OrvDiffListener::comparisonNotification(const OrvDiffResult& /*result*/) {}

#pragma once

#include <set>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvTestInfo.h"

class OrvDiffListener;

/// The listeners of a verification, in ascending pointer order; none is owned.
using OrvDiffListenerSet = std::set<OrvDiffListener*>;

/// Verifies the outputs of a report in one format. Runs on the process's one verifying thread, as
/// does every other engine.
class ORVDIFF_API OrvDiffEngine {
 public:
  OrvDiffEngine();
  OrvDiffEngine(const OrvDiffEngine&) = delete;
  OrvDiffEngine& operator=(const OrvDiffEngine&) = delete;
  virtual ~OrvDiffEngine();

  /// Verifies the outputs of the report whose own file is at `location` and delivers one result
  /// per comparison to every listener. `testInfo` may be null: then nothing is held in memory.
  /// Differences are results, never exceptions.
  virtual void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                            OrvTestInfo* testInfo) = 0;
};

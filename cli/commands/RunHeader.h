#pragma once

#include "cli/commands/RunPlan.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/record/RunRecord.h"

/// What a record says of a run as it starts.
RunRecord startedRun(const VerifyOptions& options, const RunPlan& plan);

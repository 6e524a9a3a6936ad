#pragma once

#include <vector>

#include "cli/commands/RunPlan.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/SharedPictures.h"
#include "cli/system/ExitStatus.h"

/// Prints every pair that the run would compare, and compares none. `pictures` is null if none is
/// left to another format. With `allowNone`, no pair at all is no trouble.
ExitStatus listPairs(const RunPlan& plan, const std::vector<SelectedFormat>& formats,
                     const SharedPictures* pictures, bool allowNone);

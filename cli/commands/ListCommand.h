#pragma once

#include <vector>

#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"
#include "cli/system/ExitStatus.h"

/// Prints every pair that a run would compare, with the report that it counts for, and compares
/// none. With `allowNone`, no pair at all is no trouble.
ExitStatus listPairs(const FoundReports& found, const std::vector<SelectedFormat>& formats,
                     bool allowNone);

#pragma once

#include <string>
#include <vector>

#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"
#include "cli/suite/SharedPictures.h"
#include "cli/system/ExitStatus.h"

/// Prints every pair that a run over `reports`, some or all of those that were found, would
/// compare, and compares none. With `allowNone`, no pair at all is no trouble.
ExitStatus listPairs(const std::vector<std::string>& reports, const FoundReports& found,
                     const std::vector<SelectedFormat>& formats, const SharedPictures& pictures,
                     bool allowNone);

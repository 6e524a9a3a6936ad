#pragma once

#include <string>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/FormatSelection.h"

/// Prints every pair that a run would compare, and compares none. With `allowNone`, no pair at all
/// is no trouble.
ExitStatus listPairs(const std::vector<std::string>& reports,
                     const std::vector<SelectedFormat>& formats, bool allowNone);

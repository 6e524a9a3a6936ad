#pragma once

#include <vector>

#include "cli/suite/FormatSelection.h"
#include "cli/suite/ReportFinder.h"

/// Completes the sub-folders of `options`: each once and in its plainest
/// form, and with --all-sub-folders those that the
/// suite has. `formats` are those that `options` selects. Returns whether anything changed, so that
/// formats have to be selected anew. Raises `CommandError` for a folder that cannot be read.
bool addSubFolders(FormatOptions& options, const std::vector<SelectedFormat>& formats,
                   const FoundReports& found);

#pragma once

#include <vector>

#include "cli/report/ReportKinds.h"

namespace CLI {
class App;
}

/// Adds an option for each kind of report, which appends to `requests`.
void addReportOptions(CLI::App& verb, std::vector<ReportRequest>& requests);

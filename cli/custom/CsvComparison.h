#pragma once

#include <string_view>

#include "cli/custom/ContentOutcome.h"
#include "cli/custom/OwnFormat.h"

/// Compares two texts of separated values, which are equal if they have the same records: quotes
/// that are not needed, line ends and a byte-order mark do not count. Reads both at once, row by
/// row, and builds no tables unless rows are told apart by keys.
///
/// The columns that `rules` name must be in both, each once, whether or not anything differs. Two
/// rows with the same key make a bad file.
ContentOutcome compareCsv(std::string_view master, std::string_view output, const CsvRules& rules);

#pragma once

#include <string>
#include <string_view>

#include "cli/record/PairRecord.h"

/// A pair record as one line of JSON, without a line end. A text that is no valid UTF-8 (names need
/// not be) becomes an object {"hex": "..."} of its bytes, so nothing is lost.
std::string toJsonLine(const PairRecord& record);

/// The record of a line. Raises `std::runtime_error`, saying what is wrong, for anything that
/// `toJsonLine` would not have written; members that it does not know are passed over.
PairRecord pairFromJsonLine(std::string_view line);

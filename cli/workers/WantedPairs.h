#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "cli/suite/FormatSelection.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Pairs to compare, by report, format and sub-folder. A pair without names stands for whatever
/// masters there are, an empty format (and sub-folder) for all formats.
using WantedPairs =
    std::map<std::tuple<std::string, std::string, std::string>, std::vector<OrvFilePair>>;

/// The pairs of `report` in `format`: all, or those in `wanted` unless it is null. A pair that is
/// wanted by name is among them even if its files are gone. Raises what listing the masters raises.
std::vector<OrvFilePair> findPairs(const std::string& report, const SelectedFormat& format,
                                   const WantedPairs* wanted);

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

/// Who asks for an output.
struct OutputClaim {
  std::string_view reportFolder;  ///< of the report
  std::uint32_t report;
  bool isShared;  ///< with a report in another folder
};

/// The outputs that the masters of a suite ask for: by output folder, then by name.
using ExpectedOutputs = std::map<std::string, std::unordered_map<std::string, OutputClaim>>;

#pragma once

#include <string>

/// Why a file cannot be opened or read, to be printed after its name: "does not exist", "is a
/// folder", "is a dangling link".
std::string missingReason(const std::string& path);

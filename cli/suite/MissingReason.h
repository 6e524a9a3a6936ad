#pragma once

#include <string>

/// Why a file cannot be opened or read, in words that tell a tester what to look for: "is not
/// there", "is a folder", "may not be read", "is a link to nothing".
std::string missingReason(const std::string& path);

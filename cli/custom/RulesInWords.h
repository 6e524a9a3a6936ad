#pragma once

#include <string>
#include <vector>

#include "cli/custom/OwnFormat.h"

/// What a format allows outputs to differ in, one sentence each, patterns aside. Empty: nothing.
std::vector<std::string> rulesInWords(const OwnFormat& format);

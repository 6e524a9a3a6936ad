#pragma once

#include <string>
#include <vector>

#include "cli/config/SuiteConfig.h"

/// The names in the tables `[[format]]`, as far as they are there.
std::vector<std::string> formatNames(const std::vector<const TomlValue*>& tables);

/// Reads the tables `[[format]]` into `config.formats`, after the patterns that they may name. What
/// is wrong goes to `config.problems`.
void readFormats(const std::vector<const TomlValue*>& tables, SuiteConfig& config);

#pragma once

#include <string>
#include <vector>

#include "cli/config/SuiteConfig.h"

/// Reads the tables `[[pattern]]` into `config.patterns`, compiles them and checks their examples.
/// They may be added to the documented formats and to `ownFormats`. What is wrong goes to
/// `config.problems`.
void readPatterns(const std::vector<const TomlValue*>& tables,
                  const std::vector<std::string>& ownFormats, SuiteConfig& config);

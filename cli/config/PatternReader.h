#pragma once

#include <vector>

#include "cli/config/SuiteConfig.h"

/// Reads the tables `[[pattern]]` into `config.patterns`, compiles them and checks their examples.
/// What is wrong goes to `config.problems`.
void readPatterns(const std::vector<const TomlValue*>& tables, SuiteConfig& config);

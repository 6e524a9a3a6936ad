#pragma once

#include <set>
#include <string>

/// What rules are called that are not a file's own.
const std::set<std::string>& catalogueNames();

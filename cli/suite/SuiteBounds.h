#pragma once

#include <string>
#include <vector>

/// Whether `locations` are all there is of their suite, as far as one can tell: all are folders,
/// and no folder beside one of them, up to two levels down, holds masters too. Outputs that no
/// report of a mere part of a suite accounts for may well be those of the other parts.
///
/// What is beside a folder that lies directly in the server's folder, the one above the working
/// folder, is not of the suite.
bool areWholeSuite(const std::vector<std::string>& locations);

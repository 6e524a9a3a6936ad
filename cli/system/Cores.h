#pragma once

#include <cstddef>

/// How many cores this process may use at once, at least 1: those it is bound to, and no more than
/// its control group grants it.
std::size_t availableCores();

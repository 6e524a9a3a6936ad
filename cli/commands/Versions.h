#pragma once

#include <string>

/// The versions of the program and of the libraries it uses, a line each. A library that tells its
/// own version is asked; of the others it is the version that the program was built with.
std::string versionsInUse();

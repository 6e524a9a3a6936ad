#pragma once

#include <string>

/// Reads all of the regular file `path` into `bytes`. False if it cannot be opened or read. Raises
/// `VELStdExceptionError` if the process has run out of descriptors.
bool readFile(const std::string& path, std::string& bytes);

#pragma once

#include <optional>
#include <string>

/// The bytes of the regular file `path`. Nothing when they cannot all be read, or when `hash` is
/// not theirs; an empty `hash` is anybody's.
std::optional<std::string> readUnchanged(const std::string& path, const std::string& hash);

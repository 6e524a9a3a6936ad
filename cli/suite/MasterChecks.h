#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Why the bytes of a master cannot be what a report server wrote for a name with this ending;
/// nothing if they can. `isText`: the format compares text, which ends at its first NUL byte.
/// Checks XML, JSON and PNG in full, PDF and XLSX by their first bytes.
std::optional<std::string> whyInvalid(std::string_view bytes, std::string_view ending, bool isText);

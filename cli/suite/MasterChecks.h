#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Why a master, whose bytes these are, cannot be what a report server wrote for a name with this
/// ending; nothing if it can. `isText`: the format compares text, which ends at its first NUL byte.
/// Checks XML, JSON and PNG in full, PDF and XLSX by their first bytes.
std::optional<std::string> whyInvalid(const std::string& master, std::string_view bytes,
                                      std::string_view ending, bool isText);

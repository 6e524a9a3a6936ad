#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Why the document is not well-formed, with line and column; nothing if it is. Reads nothing that
/// the document names outside itself. Starts Xerces.
std::optional<std::string> whyNotXml(std::string_view document);

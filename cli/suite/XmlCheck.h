#pragma once

#include <optional>
#include <string>

/// Why the document is not well-formed, with line and column; nothing if it is. Reads nothing that
/// the document names outside itself. An internal DTD subset counts as a fault, as it does in every
/// format that validates.
std::optional<std::string> whyNotXml(const std::string& file);

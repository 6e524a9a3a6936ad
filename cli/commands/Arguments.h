#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The words of the command line as CLI11 is to parse them for `app`: last word first, and
/// rewritten where CLI11 would misread them. Raises `CLI::ParseError` for what CLI11 would wrongly
/// accept.
std::vector<std::string> argumentsFor(const CLI::App& app, int argc, char** argv);

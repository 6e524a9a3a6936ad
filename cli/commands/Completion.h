#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The word before which a shell puts the words of a command line to have it completed. It is no
/// command, so that no help text lists it.
inline constexpr const char* kCompleteWord = "__complete";

/// Prints what the last of `words` may become, the words of a command line behind the program's
/// name up to the cursor: one candidate a line, with a tab and a description behind it where there
/// is one. A first line ":paths" tells that the candidates are files and folders. Commands, options
/// and choices are those of `app`, and the name that an option's value goes by in the help text,
/// such as FORMAT or DIR, decides how the value is completed.
///
/// Raises nothing: where something cannot be read, there is nothing to propose.
void printCompletions(const CLI::App& app, const std::vector<std::string>& words);

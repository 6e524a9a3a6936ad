#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/commands/Options.h"

namespace CLI {
class App;
}

/// What the user asked for.
struct CommandLine {
  std::string workingFolder;  ///< to change to first; empty: none
  Verbosity verbosity = Verbosity::Normal;
  std::function<ExitStatus()> perform;  ///< runs the chosen verb; raises what the verb raises
};

/// Parses the command line into `result`. If that leaves nothing to do (help, version, a usage
/// error), prints the text or message and returns the exit status.
std::optional<ExitStatus> parseCommandLine(int argc, char** argv, CommandLine& result);

// Each adds one verb to `app`. Each is defined in the file that performs the verb.
void addAccept(CLI::App& app, Performer& chosen);
void addAudit(CLI::App& app, Performer& chosen);
void addConfigVerb(CLI::App& app, Performer& chosen);
void addDiff(CLI::App& app, Performer& chosen);
void addExplain(CLI::App& app, Performer& chosen);
void addFormats(CLI::App& app, Performer& chosen);
void addHelp(CLI::App& app, Performer& chosen);
void addLog(CLI::App& app, Performer& chosen);
void addMerge(CLI::App& app, Performer& chosen);
void addNormalize(CLI::App& app, Performer& chosen);
void addNumdiff(CLI::App& app, Performer& chosen);
void addProbe(CLI::App& app, Performer& chosen);
void addRemove(CLI::App& app, Performer& chosen);
void addReport(CLI::App& app, Performer& chosen);
void addReview(CLI::App& app, Performer& chosen);
void addShow(CLI::App& app, Performer& chosen);
void addUndo(CLI::App& app, Performer& chosen);
void addVerify(CLI::App& app, Performer& chosen);

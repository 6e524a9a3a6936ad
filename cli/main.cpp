#include <clocale>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <variant>

#include "cli/commands/CommandLine.h"
#include "cli/commands/Commands.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/system/StandardStreams.h"
#include "cli/system/XercesSession.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"

namespace {

void enterFolder(const std::string& folder) {
  std::error_code error;
  if (!folder.empty()) {
    std::filesystem::current_path(folder, error);
  }
  if (error) {
    throw CommandError(folder + ": " + error.message());
  }
}

ExitStatus perform(const CommandLine& commandLine) {
  enterFolder(commandLine.workingFolder);
  const XercesSession xerces;
  return std::visit([](const auto& options) { return run(options); }, commandLine.command);
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  outliveFailedWrites();
  std::signal(SIGCHLD, SIG_DFL);          // where it is ignored, no script's exit status can be had
  std::setlocale(LC_CTYPE, "C.UTF-8");    // names and texts are UTF-8, wherever this runs
  std::ios_base::sync_with_stdio(false);  // the standard streams are buffered
  std::cerr.tie(nullptr);
  CommandLine commandLine;
  try {
    const auto finished = parseCommandLine(argc, argv, commandLine);
    return finishOutput(finished ? *finished : perform(commandLine));
  } catch (const std::exception& error) {
    std::cout.flush();
    std::cerr << "orvdiff: " << printable(causeOf(error, commandLine.verbosity)) << '\n';
    return stopStatus().value_or(kExitTrouble);
  }
}

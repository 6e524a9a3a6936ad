#include <clocale>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <system_error>

#include "cli/commands/CommandLine.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"

namespace {

void enterFolder(const std::string& folder) {
  std::error_code error;
  if (!folder.empty()) {
    std::filesystem::current_path(folder, error);
  }
  if (error) {
    throw CommandError("-C " + folder + ": " + error.message());
  }
}

ExitStatus perform(const CommandLine& commandLine) {
  enterFolder(commandLine.workingFolder);
  return commandLine.perform();
}

void prepareProcess() {
  occupyStandardStreams();
  outliveFailedWrites();
  std::signal(SIGCHLD, SIG_DFL);          // if ignored, no script's exit status can be had
  std::setlocale(LC_CTYPE, "C.UTF-8");    // names and texts are UTF-8, wherever this runs
  std::ios_base::sync_with_stdio(false);  // buffers the standard streams
  std::cerr.tie(nullptr);
}

void print(const std::exception& error, Verbosity verbosity) {
  std::cout.flush();
  try {
    std::cerr << "orvdiff: " + printable(causeOf(error, verbosity)) + '\n';
  } catch (const std::bad_alloc&) {  // words that need no memory
    std::cerr << "orvdiff: out of memory\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  CommandLine commandLine;
  try {
    prepareProcess();
    const auto finished = parseCommandLine(argc, argv, commandLine);
    return finishOutput(finished ? *finished : perform(commandLine));
  } catch (const std::exception& error) {
    print(error, commandLine.verbosity);
    return stopStatus().value_or(kExitTrouble);
  }
}

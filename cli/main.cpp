#include <clocale>
#include <exception>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <variant>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Printable.h"
#include "cli/Trouble.h"
#include "cli/XercesSession.h"

namespace {

void enterFolder(const std::string& folder) {
  std::error_code error;
  if (!folder.empty()) {
    std::filesystem::current_path(folder, error);
  }
  if (error) {
    throw Trouble(folder + ": " + error.message());
  }
}

ExitStatus perform(const CommandLine& commandLine) {
  enterFolder(commandLine.workingFolder);
  const XercesSession xerces;
  const ExitStatus status =
      std::visit([](const auto& options) { return run(options); }, commandLine.command);
  if (!std::cout.flush()) {
    throw Trouble("standard output could not be written");
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "C.UTF-8");    // names and texts are UTF-8, wherever this runs
  std::ios_base::sync_with_stdio(false);  // the standard streams are buffered
  std::cerr.tie(nullptr);
  CommandLine commandLine;
  try {
    if (const auto finished = parseCommandLine(argc, argv, commandLine)) {
      return *finished;
    }
    return perform(commandLine);
  } catch (const std::exception& trouble) {
    std::cout.flush();
    std::cerr << "orvdiff: " << printable(trouble.what()) << '\n';
    return kExitTrouble;
  }
}

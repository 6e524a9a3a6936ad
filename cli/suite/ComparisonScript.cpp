#include "cli/suite/ComparisonScript.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "cli/custom/OwnEngines.h"
#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"
#include "orvdiff/formats/OrvDiffScriptEngines.h"
#include "orvdiff/platform/VELCommand.h"

namespace {

bool isReadableFile(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), R_OK) == 0;
}

bool isProgram(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

/// Whether the shell finds the program `name` in `searchPath`, in which an empty entry means the
/// working folder.
bool isFoundIn(const std::string& searchPath, const std::string& name) {
  std::istringstream entries(searchPath + ':');
  for (std::string folder; std::getline(entries, folder, ':');) {
    if (isProgram((folder.empty() ? "." : folder) + '/' + name)) {
      return true;
    }
  }
  return false;
}

/// Debian's Python is called python3; only a package of its own gives it the name of the command.
std::string adviceFor(const std::string& interpreter) {
  return interpreter == "python" ? "install the Debian package python-is-python3"
                                 : "install " + interpreter;
}

}  // namespace

bool runsScript(const OrvDiffFileEngine& engine) {
  return scriptRulesOf(engine) != nullptr ||
         dynamic_cast<const OrvDiffScriptFileEngine*>(&engine) != nullptr;
}

std::string scriptProblem(const OrvDiffFileEngine& engine) {
  const auto* const scriptEngine = dynamic_cast<const OrvDiffScriptFileEngine*>(&engine);
  if (scriptEngine == nullptr) {
    return obstacleOf(engine);
  }
  std::istringstream command(scriptEngine->getCommandPrefix());
  std::string interpreter;
  std::string script;
  command >> interpreter >> script;
  if (!isReadableFile(script)) {
    std::error_code unknown;
    return "the comparison script " + script + ' ' + missingReason(script) +
           " (working folder: " + std::filesystem::current_path(unknown).string() + ")";
  }
  const char* const searchPath = std::getenv("PATH");
  if (searchPath != nullptr && !isFoundIn(searchPath, interpreter)) {
    return interpreter + ", which runs the comparison script " + script + ", is not in PATH (" +
           searchPath + "); " + adviceFor(interpreter);
  }
  return {};
}

void requireStartedScripts() {
  const int code = VELCommand::takeFailure();
  if (code != 0) {
    throw CommandError("a comparison script could not be run (its \"differs\" is no verdict): " +
                       std::generic_category().message(code));
  }
}

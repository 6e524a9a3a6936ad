#include "cli/custom/ScriptRun.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <system_error>

#include "cli/system/CommandError.h"
#include "cli/system/ProcessTree.h"

namespace {

constexpr std::string_view kMaster = "{master}";
constexpr std::string_view kOutput = "{output}";

std::string asArgument(const std::string& file) {
  return file.compare(0, 1, "-") == 0 ? "./" + file : file;
}

/// Fills in the placeholders. What is filled in is not searched again.
std::string filledIn(std::string_view argument, const std::string& master,
                     const std::string& output) {
  std::string text;
  while (!argument.empty()) {
    const bool isMaster = argument.substr(0, kMaster.size()) == kMaster;
    const bool isOutput = argument.substr(0, kOutput.size()) == kOutput;
    if (isMaster || isOutput) {
      text += asArgument(isMaster ? master : output);
      argument.remove_prefix(isMaster ? kMaster.size() : kOutput.size());
    } else {
      text += argument.front();
      argument.remove_prefix(1);
    }
  }
  return text;
}

[[noreturn]] void fail(const ScriptRules& rules, const std::string& what) {
  throw CommandError("the comparison script " + rules.command.front() + ' ' + what);
}

pid_t start(const ScriptRules& rules, const std::string& master, const std::string& output) {
  std::vector<std::string> texts = {rules.command.front()};
  std::transform(rules.command.begin() + 1, rules.command.end(), std::back_inserter(texts),
                 [&](const std::string& argument) { return filledIn(argument, master, output); });
  std::vector<char*> arguments;
  arguments.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    arguments.push_back(text.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  int error = posix_spawn_file_actions_init(&actions);
  if (error != 0) {
    fail(rules, "cannot be started: " + std::generic_category().message(error));
  }
  pid_t child = -1;
  error = posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (error == 0) {
    error = posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  }
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    fail(rules, "cannot be started: " + std::generic_category().message(error));
  }
  return child;
}

/// Waits for the end of a child. False if it takes longer than `seconds`, or cannot be watched.
bool endsWithin(pid_t child, double seconds) {
  using Clock = std::chrono::steady_clock;
  const int watched = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
  if (watched < 0) {
    return false;
  }
  const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
  int ready = -1;
  do {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count() + 1;
    constexpr long long kLongestWait = 60'000;
    pollfd descriptor = {watched, POLLIN, 0};
    ready = poll(&descriptor, 1, static_cast<int>(std::clamp<long long>(left, 0, kLongestWait)));
  } while (ready <= 0 && (ready == 0 || errno == EINTR) && Clock::now() < deadline);
  close(watched);
  return ready > 0;
}

int waitFor(pid_t child) {
  int status = -1;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

bool isProgram(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

bool contains(const std::vector<int>& statuses, int status) {
  return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

std::string inSeconds(double seconds) {
  std::ostringstream text;
  text << seconds << (seconds == 1 ? " second" : " seconds");
  return text.str();
}

}  // namespace

bool runScript(const ScriptRules& rules, const std::string& master, const std::string& output) {
  const pid_t child = start(rules, master, output);
  if (!endsWithin(child, rules.seconds)) {
    killProcessTree(child);
    waitFor(child);
    fail(rules, "did not end within " + inSeconds(rules.seconds) + " and was killed");
  }
  const int status = waitFor(child);
  if (WIFSIGNALED(status)) {
    fail(rules, std::string("was killed by a signal: ") + strsignal(WTERMSIG(status)));
  }
  const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (contains(rules.passes, exitStatus)) {
    return true;
  }
  if (!contains(rules.differs, exitStatus)) {
    fail(rules, "ended with status " + std::to_string(exitStatus) +
                    ", which means neither that the files are equal nor that they differ");
  }
  return false;
}

std::string programProblem(const ScriptRules& rules) {
  const std::string& program = rules.command.front();
  if (program.find('/') != std::string::npos) {
    struct stat status = {};
    if (isProgram(program)) {
      return {};
    }
    return "the comparison script " + program +
           (stat(program.c_str(), &status) == 0 ? " is not executable"
                                                : ": " + std::generic_category().message(errno));
  }
  const char* const searchPath = std::getenv("PATH");
  if (searchPath == nullptr) {
    return {};  // the system has a default
  }
  std::istringstream entries(std::string(searchPath) + ':');
  for (std::string folder; std::getline(entries, folder, ':');) {
    if (isProgram((folder.empty() ? "." : folder) + '/' + program)) {
      return {};
    }
  }
  return "the comparison script " + program + " is not in PATH (" + searchPath + ")";
}

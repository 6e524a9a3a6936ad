#include "cli/system/ProcessTree.h"

#include <dirent.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

/// The parent of a process, or -1 when it is gone. The name in the file, in brackets, may hold
/// anything, brackets too; the fields behind the last one are numbers.
pid_t parentOf(const std::string& process) {
  std::ifstream file("/proc/" + process + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t end = line.rfind(") ");
  constexpr std::size_t kToParent = 4;  // ") S " with the state in between
  return end == std::string::npos
             ? -1
             : static_cast<pid_t>(std::strtol(line.c_str() + end + kToParent, nullptr, 10));
}

/// All processes with their parents.
std::vector<std::pair<pid_t, pid_t>> readProcesses() {
  std::vector<std::pair<pid_t, pid_t>> processes;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
  while (const dirent* const entry = folder ? readdir(folder.get()) : nullptr) {
    const pid_t process = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (process > 0) {
      processes.emplace_back(process, parentOf(entry->d_name));
    }
  }
  return processes;
}

/// Stops every descendant of `root` until a look finds no new one, and notes them in `known`.
void stopDescendants(pid_t root, std::set<pid_t>& known) {
  known.insert(root);
  bool grew = true;
  while (grew) {
    grew = false;
    for (const auto& [process, parent] : readProcesses()) {
      if (known.count(parent) != 0 && known.insert(process).second) {
        kill(process, SIGSTOP);
        grew = true;
      }
    }
  }
}

/// Kills all descendants of `root`; without memory, those that were found until then.
void killDescendantsOf(pid_t root) noexcept {
  std::set<pid_t> known;
  try {
    stopDescendants(root, known);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the process group is left to the caller
  }
  known.erase(root);
  for (const pid_t process : known) {
    kill(process, SIGKILL);
  }
}

}  // namespace

void killProcessTree(pid_t root) noexcept {
  kill(root, SIGSTOP);
  killDescendantsOf(root);
  kill(root, SIGKILL);
}

void killDescendants() noexcept {
  killDescendantsOf(getpid());
}

void adoptOrphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

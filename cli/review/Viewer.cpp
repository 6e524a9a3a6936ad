#include "cli/review/Viewer.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "cli/terminal/Printable.h"

namespace {

/// Runs a program with signals as a shell would start it, and waits for its end. Returns its status
/// as a shell gives it: 127 if it is not there.
int run(const std::vector<std::string>& words, const sigset_t& mask) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t ignored;
  sigemptyset(&ignored);
  sigaddset(&ignored, SIGINT);
  sigaddset(&ignored, SIGQUIT);
  posix_spawnattr_setsigdefault(&attributes, &ignored);
  posix_spawnattr_setsigmask(&attributes, &mask);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  pid_t child = 0;
  const int error =
      posix_spawnp(&child, arguments.front(), nullptr, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  constexpr int kNotFound = 127;
  if (error != 0) {
    return kNotFound;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  constexpr int kSignalled = 128;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

std::string describe(const std::string& program, int status) {
  return status == 0 ? ""
                     : printable(program) + " ended with status " + std::to_string(status) +
                           (status == 127 ? ": it is not there" : "");
}

}  // namespace

std::string showInViewer(Screen& screen, const PairFiles::Paths& files, bool isText) {
  const char* const viewer = std::getenv("ORVDIFF_VIEWER");
  const bool hasViewer = viewer != nullptr && *viewer != '\0';
  if (!hasViewer && isText) {
    return "Set ORVDIFF_VIEWER to a program that shows two files, such as vimdiff or meld";
  }
  const Screen::Pause pause(screen);
  if (hasViewer) {
    // The shell splits the variable, but never looks into the names of the files. Programs such as
    // diff end with 1 when the files differ.
    const int status =
        run({"sh", "-c", "$ORVDIFF_VIEWER \"$@\"", "orvdiff", files.master, files.output},
            pause.signalMask());
    return status <= 1 ? "" : describe(viewer, status);
  }
  int status = run({"xdg-open", files.master}, pause.signalMask());
  status = status == 0 ? run({"xdg-open", files.output}, pause.signalMask()) : status;
  return describe("xdg-open", status);
}

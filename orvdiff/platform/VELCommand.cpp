#include "orvdiff/platform/VELCommand.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace orvdiff::host {

int VELCommand::run(const char* commandLine) {
  posix_spawn_file_actions_t actions;
  if (posix_spawn_file_actions_init(&actions) != 0) {
    return -1;
  }
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  const char* const arguments[] = {"sh", "-c", commandLine, nullptr};
  pid_t child = -1;
  // The interface takes the arguments without const for C's sake; it does not write to them.
  const int started = posix_spawn(&child, "/bin/sh", &actions, nullptr,
                                  const_cast<char* const*>(arguments), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (started != 0) {
    return -1;
  }
  int status = -1;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      return -1;
    }
  }
  return status;
}

}  // namespace orvdiff::host

#include "orvdiff/platform/VELCommand.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace orvdiff::host {

namespace {

std::atomic<int> s_failure = 0;

int fail(int code) {
  s_failure = code;
  return -1;
}

}  // namespace

int VELCommand::run(const char* commandLine) {
  posix_spawn_file_actions_t actions;
  const int prepared = posix_spawn_file_actions_init(&actions);
  if (prepared != 0) {
    return fail(prepared);
  }
  const char* const arguments[] = {"sh", "-c", commandLine, nullptr};
  pid_t child = -1;
  // The interface takes the arguments without const for C's sake; it does not write to them.
  int started = posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (started == 0) {
    started = posix_spawn(&child, "/bin/sh", &actions, nullptr, const_cast<char* const*>(arguments),
                          environ);
  }
  posix_spawn_file_actions_destroy(&actions);
  if (started != 0) {
    return fail(started);
  }
  int status = -1;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      return fail(errno);
    }
  }
  return status;
}

int VELCommand::takeFailure() {
  return s_failure.exchange(0);
}

}  // namespace orvdiff::host

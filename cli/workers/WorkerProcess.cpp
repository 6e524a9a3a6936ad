#include "cli/workers/WorkerProcess.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "cli/workers/ProcessTree.h"

WorkerLink::~WorkerLink() = default;

void PipeLink::addFrame(FrameKind kind, std::string_view message) {
  const FrameHead head = {kind, m_task, m_step, message.size()};
  m_frames.append(reinterpret_cast<const char*>(&head), sizeof head);
  m_frames += message;
}

void PipeLink::flush() {
  std::size_t done = 0;
  while (done < m_frames.size()) {
    const ssize_t count = ::write(m_pipe, m_frames.data() + done, m_frames.size() - done);
    if (count < 0 && errno != EINTR) {
      _exit(EXIT_FAILURE);
    }
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  m_frames.clear();
  m_board.endStep(m_slot);
}

namespace {

void endGroup(int /*signal*/) {
  kill(0, SIGKILL);  // the worker and the scripts it has started
}

}  // namespace

void becomeWorker(pid_t parent, std::uint64_t memoryLimit) {
  setpgid(0, 0);
  struct sigaction action = {};
  action.sa_handler = endGroup;
  sigemptyset(&action.sa_mask);
  sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_DFL;
  sigaction(SIGINT, &action, nullptr);
  action.sa_handler = [](int /*signal*/) {};  // programs that are started do not inherit a handler
  sigaction(SIGPIPE, &action, nullptr);
  adoptOrphans();
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);  // it died before the line above
  }
  if (memoryLimit > 0) {
    const rlimit limit = {memoryLimit, memoryLimit};
    setrlimit(RLIMIT_AS, &limit);
  }
}

#include "cli/workers/WorkerProcess.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "cli/system/ProcessTree.h"

WorkerLink::~WorkerLink() = default;

void PipeLink::addFrame(FrameKind kind, std::string_view message) {
  const FrameHead head = {kind, m_task, m_step, message.size()};
  m_frames.append(reinterpret_cast<const char*>(&head), sizeof head);
  m_frames += message;
}

void PipeLink::writeFrames() {
  std::size_t done = 0;
  while (done < m_frames.size()) {
    const ssize_t count = ::write(m_pipe, m_frames.data() + done, m_frames.size() - done);
    if (count < 0 && errno != EINTR) {
      _exit(EXIT_FAILURE);
    }
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  m_frames.clear();
}

void PipeLink::flush() {
  writeFrames();
  m_board.endStep(m_slot);
}

namespace {

void endGroup(int /*signal*/) {
  kill(0, SIGKILL);  // the worker and the scripts it has started
}

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

}  // namespace

void workAsChild(PoolWork& work, SharedBoard& board, const WorkerStart& start,
                 const std::optional<Resumption>& resumption) {
  int status = EXIT_FAILURE;
  try {
    becomeWorker(start.parent, start.memoryLimit);
    PipeLink link(start.pipe, board, start.slot);
    const auto perform = [&](std::uint32_t task, std::uint64_t step) {
      link.startTask(task);
      work.perform(task, step, link);
      link.endTask();
    };
    if (resumption) {
      perform(resumption->task, resumption->step);
    }
    while (const auto task = board.takeTask(start.id)) {
      perform(*task, 0);
    }
    status = EXIT_SUCCESS;
  } catch (...) {  // NOLINT(bugprone-empty-catch): the parent sees the status
  }
  killDescendants();
  _exit(status);
}

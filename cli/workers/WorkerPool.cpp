#include "cli/workers/WorkerPool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <exception>
#include <list>
#include <map>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/system/ProcessTree.h"
#include "cli/workers/DeliveryOrder.h"
#include "cli/workers/SharedBoard.h"
#include "cli/workers/WorkerProcess.h"

// The parent never writes to a worker: what there is to do lies in the memory they share, and what
// a worker found comes back through a pipe of its own, in frames.
//
// What is known of a worker that died is what the parent has read from its pipe to the end, and
// the step on the board. A step whose message arrived is done, whatever the board says; any other
// step on the board is lost.

PoolWork::~PoolWork() = default;

namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr std::size_t kHeldBackLimit = std::size_t{256} << 20;  ///< bytes that wait for their turn
constexpr int kPollMilliseconds = 100;  ///< between two looks at the clock and at `isStopWanted`
constexpr int kMostTries = 3;           ///< workers in a row that a task may cost without progress

[[noreturn]] void raise(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

struct Worker {
  std::uint32_t id;
  std::size_t slot;
  pid_t process;
  int pipe;
  std::string unread;  ///< the start of a frame that has not arrived whole
  std::uint32_t task = 0;
  std::uint64_t nextStep = 0;  ///< of `task`: the first that has not arrived
  bool timedOut = false;
  std::string soFar = {};  ///< of its step, which is still to come; empty: nothing
};

}  // namespace

class WorkerPool::Impl {
 public:
  Impl(PoolWork& work, std::uint32_t taskCount, const PoolLimits& limits)
      : m_work(work),
        m_taskCount(taskCount),
        m_limits(limits),
        m_slotCount(std::max<std::size_t>(1, std::min<std::size_t>(limits.workers, taskCount))),
        m_board(taskCount, m_slotCount),
        m_order(work, taskCount) {
    for (std::size_t slot = m_slotCount; slot > 0; --slot) {
      m_freeSlots.push_back(slot - 1);
    }
  }

  ~Impl() {
    for (const Worker& worker : m_workers) {
      killProcessTree(worker.process);
    }
    for (const Worker& worker : m_workers) {
      reap(worker);
    }
  }

  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  bool run(const std::function<bool()>& isStopWanted) {
    startWorkers();
    while (m_order.unfinished() > 0) {
      if (isStopWanted()) {
        endWorkers();
        m_order.giveUp();
        return false;
      }
      if (m_workers.empty()) {
        startAgain();
      }
      waitForWorkers(isStopWanted);
      killOverdue();
    }
    return true;
  }

 private:
  void startWorkers() {
    std::size_t left = m_order.unfinished();
    while (left-- > 0 && !m_freeSlots.empty() && (m_workers.empty() || m_mayGrow)) {
      start(std::nullopt);
    }
  }

  /// When no worker is left but tasks are.
  void startAgain() {
    if (m_leftOver.empty()) {
      m_board.rewind();  // a worker died between passing a task and taking it
      startWorkers();
      return;
    }
    const Resumption next = m_leftOver.front();
    m_leftOver.pop_front();
    start(next);
  }

  /// Starts a worker. Where the system refuses, those that there are do the work alone.
  void start(const std::optional<Resumption>& resumption) {
    std::list<Worker> fresh(1);  // before the fork: what was started must not be lost
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
      return refuse("cannot create a pipe for a worker process", resumption);
    }
    const std::uint32_t id = ++m_lastId;
    const std::size_t slot = m_freeSlots.back();
    m_board.endStep(slot);
    if (resumption) {
      m_board.assign(resumption->task, id);
    }
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
      close(ends[0]);
      for (const Worker& other : m_workers) {
        close(other.pipe);
      }
      workAsChild(m_work, m_board, {id, slot, parent, ends[1], m_limits.memoryPerWorker},
                  resumption);
    }
    const int error = errno;
    close(ends[1]);
    if (process < 0) {
      close(ends[0]);
      errno = error;
      return refuse("cannot start a worker process", resumption);
    }
    setpgid(process, process);  // whichever of the two comes first
    m_freeSlots.pop_back();
    fresh.front() = {id, slot, process, ends[0], {}};
    if (resumption) {
      fresh.front().task = resumption->task;
      fresh.front().nextStep = resumption->step;
    }
    m_workers.splice(m_workers.end(), fresh);
  }

  void refuse(const char* what, const std::optional<Resumption>& resumption) {
    if (m_workers.empty()) {
      raise(what);
    }
    m_mayGrow = false;
    if (resumption) {
      m_leftOver.push_back(*resumption);  // its task stays that of a worker that never came to be
    }
  }

  void waitForWorkers(const std::function<bool()>& isStopWanted) {
    std::vector<pollfd> waiting;
    std::vector<std::list<Worker>::iterator> readers;
    const std::uint32_t neededOwner = m_order.heldBack() > kHeldBackLimit
                                          ? m_board.ownerOf(m_order.next())
                                          : SharedBoard::kNobody;
    const bool isNeededAlive =
        std::any_of(m_workers.begin(), m_workers.end(),
                    [neededOwner](const Worker& worker) { return worker.id == neededOwner; });
    for (auto worker = m_workers.begin(); worker != m_workers.end(); ++worker) {
      if (!isNeededAlive || worker->id == neededOwner) {
        waiting.push_back({worker->pipe, POLLIN, 0});
        readers.push_back(worker);
      }
    }
    const int ready = poll(waiting.data(), waiting.size(), kPollMilliseconds);
    if (ready < 0 && errno != EINTR) {
      raise("cannot wait for worker processes");
    }
    if (ready <= 0 || isStopWanted()) {  // what comes after a Ctrl-C may be due to it
      return;
    }
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (waiting[i].revents != 0 && !readFrom(*readers[i])) {
        bury(readers[i]);
      }
    }
  }

  /// Reads what has arrived, once. False at the end of the pipe: the worker is gone.
  bool readFrom(Worker& worker) {
    char block[kReadSize];
    const ssize_t count = read(worker.pipe, block, sizeof block);
    if (count < 0 && errno != EINTR) {
      raise("cannot read from a worker process");
    }
    if (count <= 0) {
      return count < 0;
    }
    worker.unread.append(block, static_cast<std::size_t>(count));
    std::string_view rest = worker.unread;
    FrameHead head = {};
    while (rest.size() >= sizeof head) {
      std::memcpy(&head, rest.data(), sizeof head);
      if (rest.size() - sizeof head < head.length) {
        break;
      }
      take(worker, head, rest.substr(sizeof head, head.length));
      rest.remove_prefix(sizeof head + head.length);
    }
    worker.unread.erase(0, worker.unread.size() - rest.size());
    return true;
  }

  void take(Worker& worker, const FrameHead& head, std::string_view message) {
    worker.task = head.task;
    m_tries.erase(head.task);
    worker.soFar.clear();
    if (head.kind == FrameKind::SoFar) {
      worker.nextStep = head.step;
      worker.soFar = message;
      return;
    }
    if (head.kind == FrameKind::TaskEnd) {
      m_order.finish(head.task);
      worker.nextStep = 0;
      return;
    }
    worker.nextStep = head.step + 1;
    m_order.receive(head.task, message);
  }

  /// Takes note of a worker's end, and has a fresh one go on with what it left.
  void bury(std::list<Worker>::iterator position) {
    const Worker worker = std::move(*position);
    m_workers.erase(position);
    const int status = reap(worker);
    m_freeSlots.push_back(worker.slot);
    if (const auto left = remainderOf(worker, status)) {
      start(left);
    }
  }

  /// What a dead worker leaves to another. Reports the step that was lost, if one was.
  std::optional<Resumption> remainderOf(const Worker& worker, int status) {
    const std::optional<std::uint32_t> task = taskOf(worker);
    if (!task) {
      return std::nullopt;
    }
    const std::uint64_t next = *task == worker.task ? worker.nextStep : 0;
    const auto step = m_board.currentStep(worker.slot);
    const bool wasAtStep = step && step->task == *task && step->number >= next;
    const WorkerLoss loss = {worker.timedOut, status};
    const bool isOut = ++m_tries[*task] >= kMostTries;
    if (wasAtStep && (worker.timedOut || isOut || !m_work.isRepeatable(step->number))) {
      m_tries.erase(*task);
      m_order.lose(*task, worker.soFar.empty() ? step->description : worker.soFar, loss);
      return Resumption{*task, m_work.stepAfter(step->number)};
    }
    if (isOut) {  // it kills its workers before they are at a step
      m_order.lose(*task, {}, loss);
      m_order.finish(*task);
      return std::nullopt;
    }
    return Resumption{*task, next};
  }

  /// The unfinished task that a worker owns. It takes one at a time, in rising order.
  std::optional<std::uint32_t> taskOf(const Worker& worker) const {
    for (std::uint32_t task = 0; task < m_taskCount; ++task) {
      if (!m_order.isFinished(task) && m_board.ownerOf(task) == worker.id) {
        return task;
      }
    }
    return std::nullopt;
  }

  static int reap(const Worker& worker) {
    close(worker.pipe);
    int status = 0;
    while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
    }
    kill(-worker.process, SIGKILL);  // what it had started and did not take along
    return status;
  }

  void killOverdue() {
    if (m_limits.secondsPerStep <= 0) {
      return;
    }
    const auto limit = static_cast<std::int64_t>(m_limits.secondsPerStep * 1e9);
    for (Worker& worker : m_workers) {
      const auto step = m_board.currentStep(worker.slot);
      if (step && !worker.timedOut && monotonicNow() - step->startedAt > limit) {
        worker.timedOut = true;
        killProcessTree(worker.process);
      }
    }
  }

  /// Kills the workers, and takes what they had sent.
  void endWorkers() {
    for (const Worker& worker : m_workers) {
      killProcessTree(worker.process);
    }
    for (Worker& worker : m_workers) {
      while (readFrom(worker)) {
      }
    }
  }

  PoolWork& m_work;
  const std::uint32_t m_taskCount;
  const PoolLimits m_limits;
  const std::size_t m_slotCount;
  SharedBoard m_board;
  std::list<Worker> m_workers;
  std::vector<std::size_t> m_freeSlots;
  std::deque<Resumption> m_leftOver;  ///< for which no process could be started
  std::uint32_t m_lastId = 0;
  bool m_mayGrow = true;
  std::map<std::uint32_t, int> m_tries;  ///< workers that a task has cost since it last progressed
  DeliveryOrder m_order;
};

WorkerPool::WorkerPool(PoolWork& work, std::uint32_t taskCount, const PoolLimits& limits)
    : m_impl(std::make_unique<Impl>(work, taskCount, limits)) {}

WorkerPool::~WorkerPool() = default;

bool WorkerPool::run(const std::function<bool()>& isStopWanted) {
  return m_impl->run(isStopWanted);
}

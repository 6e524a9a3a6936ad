#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// The way from a worker process to its parent.
///
/// A worker does one task after the other, each in steps. What it sends of a step reaches the
/// parent whole or, if the worker dies before, not at all; the parent then knows which step it was.
class WorkerLink {
 public:
  virtual ~WorkerLink();

  /// Says that the worker starts on `step`, which must be greater than any before it in this task.
  /// `description` is what the parent is told should the step be lost; kept up to 16 KiB.
  virtual void begin(std::uint64_t step, std::string_view description) = 0;

  /// Sends what is known so far of the step begun last: what the parent is told instead of the
  /// step's description should the rest be lost. May be any size.
  virtual void sendSoFar(std::string_view message) = 0;

  /// Sends what came of the step begun last, and ends it.
  virtual void send(std::string_view message) = 0;

  /// Ends the step begun last, which has nothing to tell. Another worker may repeat it if this one
  /// dies before it sends something of a later step.
  virtual void end() = 0;
};

/// How a step was lost.
struct WorkerLoss {
  bool timedOut = false;  ///< the pool killed the worker because the step took too long
  int waitStatus = 0;     ///< of the worker, as `waitpid` gives it
};

/// The work of a pool. The first operation runs in worker processes, which are forks of the parent,
/// so it sees what the parent had before `WorkerPool::run`; the others run in the parent, for one
/// task after the other in the order of their numbers.
class PoolWork {
 public:
  virtual ~PoolWork();

  /// Does the steps of `task` that are not below `firstStep`. An exception kills the worker.
  virtual void perform(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link) = 0;

  /// A step's message.
  virtual void received(std::uint32_t task, std::string_view message) = 0;

  /// A step was lost. `description` is what its worker last said of it, with `begin` or
  /// `sendSoFar`. The task goes on in another process, with the step that `stepAfter` names.
  virtual void lost(std::uint32_t task, std::string_view description, const WorkerLoss& loss) = 0;

  /// The step to go on with when `step` was lost.
  virtual std::uint64_t stepAfter(std::uint64_t step) const { return step + 1; }

  /// Whether `step` may be done again by another worker before it counts as lost: it is cheap, and
  /// the death of its worker hardly its own doing.
  virtual bool isRepeatable(std::uint64_t /*step*/) const { return false; }

  /// The task is done; nothing more comes of it.
  virtual void finished(std::uint32_t task) = 0;
};

struct PoolLimits {
  std::size_t workers = 1;
  double secondsPerStep = 0;          ///< 0: none
  std::uint64_t memoryPerWorker = 0;  ///< bytes of address space; 0: unlimited
};

/// Runs tasks in worker processes, and delivers what they send in the order of the tasks.
///
/// Workers take their next task themselves from memory that all share, so a slow task holds up
/// nobody else. A worker that dies costs the step it was at; a fresh one takes its place. Each
/// worker leads a process group of its own, which ends with it; should the parent be killed, the
/// workers end themselves. The caller must have one thread only, and flushed its streams.
class WorkerPool {
 public:
  WorkerPool(PoolWork& work, std::uint32_t taskCount, const PoolLimits& limits);
  ~WorkerPool();  ///< kills what still runs
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Runs all tasks. Returns early, with false, soon after `isStopWanted` answers true; what had
  /// arrived by then has been delivered, also of tasks behind unfinished ones. Raises
  /// `std::system_error` when not even one worker can be started, or workers cannot be heard.
  bool run(const std::function<bool()>& isStopWanted);

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

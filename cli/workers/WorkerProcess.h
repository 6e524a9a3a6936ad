#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/workers/SharedBoard.h"
#include "cli/workers/WorkerPool.h"

// The worker's side of a pool.

enum class FrameKind : std::uint32_t { Message, TaskEnd };

/// What precedes each message in a worker's pipe.
struct FrameHead {
  FrameKind kind;
  std::uint32_t task;
  std::uint64_t step;
  std::uint64_t length;
};

/// The worker's end. A parent that is gone is no matter for an exception: the worker just ends.
///
/// A message waits for the next step or the end of the task: most tasks have one message, which
/// then leaves in the same write as their end. Its step counts as begun until then.
class PipeLink : public WorkerLink {
 public:
  PipeLink(int pipe, SharedBoard& board, std::size_t slot)
      : m_pipe(pipe), m_board(board), m_slot(slot) {}

  void startTask(std::uint32_t task) { m_task = task; }
  void endTask() {
    addFrame(FrameKind::TaskEnd, {});
    flush();
  }

  void begin(std::uint64_t step, std::string_view description) override {
    flush();
    m_step = step;
    m_board.beginStep(m_slot, m_task, step, description);
  }

  void send(std::string_view message) override { addFrame(FrameKind::Message, message); }

  void end() override { m_board.endStep(m_slot); }

 private:
  void addFrame(FrameKind kind, std::string_view message);
  void flush();

  int m_pipe;
  SharedBoard& m_board;
  std::size_t m_slot;
  std::uint32_t m_task = 0;
  std::uint64_t m_step = 0;
  std::string m_frames;  ///< not yet written
};

/// Makes a fresh fork a worker: a process group of its own, which ends when the parent does.
/// `memoryLimit` is in bytes of address space; 0: unlimited.
void becomeWorker(pid_t parent, std::uint64_t memoryLimit);

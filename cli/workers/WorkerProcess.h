#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/workers/SharedBoard.h"
#include "cli/workers/WorkerPool.h"

// The worker's side of a pool.

enum class FrameKind : std::uint32_t { SoFar, Message, TaskEnd };

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

  void sendSoFar(std::string_view message) override {
    addFrame(FrameKind::SoFar, message);
    writeFrames();
  }

  void send(std::string_view message) override { addFrame(FrameKind::Message, message); }

  void end() override { m_board.endStep(m_slot); }

 private:
  void addFrame(FrameKind kind, std::string_view message);
  void writeFrames();
  void flush();

  int m_pipe;
  SharedBoard& m_board;
  std::size_t m_slot;
  std::uint32_t m_task = 0;
  std::uint64_t m_step = 0;
  std::string m_frames;  ///< not yet written
};

/// Where a fresh worker takes up what another one left.
struct Resumption {
  std::uint32_t task;
  std::uint64_t step;
};

struct WorkerStart {
  std::uint32_t id;
  std::size_t slot;
  pid_t parent;
  int pipe;
  std::uint64_t memoryLimit;  ///< bytes of address space; 0: unlimited
};

/// What a fresh fork does: makes itself a worker, in a process group of its own that ends when the
/// parent does, works until there are no more tasks, and ends.
[[noreturn]] void workAsChild(PoolWork& work, SharedBoard& board, const WorkerStart& start,
                              const std::optional<Resumption>& resumption);

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/workers/WorkerPool.h"

/// Brings what comes of tasks that are done side by side into the order of the tasks.
///
/// What comes of a task is told to the `PoolWork` at once if all tasks before it are finished, and
/// held back until then if not.
class DeliveryOrder {
 public:
  DeliveryOrder(PoolWork& work, std::uint32_t taskCount);

  void receive(std::uint32_t task, std::string_view message);
  void lose(std::uint32_t task, std::string_view description, const WorkerLoss& loss);

  /// Nothing more comes of `task`. May be said again.
  void finish(std::uint32_t task);

  /// Delivers everything that is held back, though tasks before it are not finished.
  void giveUp();

  bool isFinished(std::uint32_t task) const { return m_isFinished[task]; }
  std::uint32_t unfinished() const { return m_unfinished; }

  /// The task whose turn it is: the first that is not finished, or the number of tasks.
  std::uint32_t next() const { return m_next; }

  /// Bytes of messages that wait for their turn.
  std::size_t heldBack() const { return m_heldBack; }

 private:
  struct Event {
    std::optional<WorkerLoss> loss;  ///< none: `text` is a message
    std::string text;
  };

  void add(std::uint32_t task, Event event);
  void deliver(std::uint32_t task, const Event& event);
  void deliverHeldBack(std::uint32_t task);

  PoolWork& m_work;
  std::vector<bool> m_isFinished;
  std::uint32_t m_unfinished;
  std::uint32_t m_next = 0;
  std::map<std::uint32_t, std::vector<Event>> m_events;  ///< held back, by task
  std::size_t m_heldBack = 0;
};

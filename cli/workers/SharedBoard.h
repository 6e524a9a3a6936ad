#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The memory that a parent and its workers share: who has which task, and what each is at.
///
/// A worker may be killed between any two instructions. So a task is taken by one atomic store of
/// the worker's number, never by a counter alone: a task that the counter has passed and nobody
/// owns is found and given out again. A step is announced by the store of its start time, after
/// everything that describes it; until then the step has not begun.
class SharedBoard {
 public:
  static constexpr std::uint32_t kNobody = 0;  ///< workers are numbered from 1
  static constexpr std::size_t kDescriptionLimit = std::size_t{16} << 10;

  struct Step {
    std::uint32_t task;
    std::uint64_t number;
    std::int64_t startedAt;  ///< nanoseconds of the monotonic clock
    std::string_view description;
  };

  /// Raises `std::system_error` when the memory cannot be had.
  SharedBoard(std::uint32_t taskCount, std::size_t slotCount);
  ~SharedBoard();
  SharedBoard(const SharedBoard&) = delete;
  SharedBoard& operator=(const SharedBoard&) = delete;

  // In workers.

  /// Takes a task that nobody has, if there is one.
  std::optional<std::uint32_t> takeTask(std::uint32_t worker);
  void beginStep(std::size_t slot, std::uint32_t task, std::uint64_t number,
                 std::string_view description);
  void endStep(std::size_t slot);

  // In the parent.

  std::uint32_t ownerOf(std::uint32_t task) const;
  /// Takes `task` away from whoever had it, for the worker `worker` to come.
  void assign(std::uint32_t task, std::uint32_t worker);
  /// Has all tasks looked at again that nobody owns.
  void rewind();
  /// The step that the worker in `slot` is at, if it is at one.
  std::optional<Step> currentStep(std::size_t slot) const;

 private:
  struct Slot;
  struct Head {
    std::atomic<std::uint32_t> next;
  };

  std::uint32_t m_taskCount;
  std::size_t m_size;
  Head* m_head;
  std::atomic<std::uint32_t>* m_owners;
  Slot* m_slots;
};

/// Now, in nanoseconds of the clock that steps are timed with.
std::int64_t monotonicNow();

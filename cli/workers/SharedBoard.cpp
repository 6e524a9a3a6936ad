#include "cli/workers/SharedBoard.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <system_error>

struct SharedBoard::Slot {
  std::atomic<std::int64_t> startedAt;  ///< 0: at no step
  std::uint64_t number;
  std::uint32_t task;
  std::uint32_t descriptionLength;
  char description[kDescriptionLimit];
};

namespace {

constexpr std::size_t kAlignment = 64;

std::size_t aligned(std::size_t size) {
  return (size + kAlignment - 1) / kAlignment * kAlignment;
}

}  // namespace

SharedBoard::SharedBoard(std::uint32_t taskCount, std::size_t slotCount) : m_taskCount(taskCount) {
  static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
  static_assert(std::atomic<std::int64_t>::is_always_lock_free);
  const std::size_t ownersAt = aligned(sizeof(Head));
  const std::size_t slotsAt = ownersAt + aligned(taskCount * sizeof(*m_owners));
  m_size = slotsAt + slotCount * sizeof(Slot);
  // Fresh pages are all zero: the counter at the first task, no owner, no step.
  void* const memory =
      mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(),
                            "cannot get memory to share with workers");
  }
  auto* const bytes = static_cast<char*>(memory);
  m_head = reinterpret_cast<Head*>(bytes);
  m_owners = reinterpret_cast<std::atomic<std::uint32_t>*>(bytes + ownersAt);
  m_slots = reinterpret_cast<Slot*>(bytes + slotsAt);
}

SharedBoard::~SharedBoard() {
  munmap(m_head, m_size);
}

std::optional<std::uint32_t> SharedBoard::takeTask(std::uint32_t worker) {
  for (;;) {
    const std::uint32_t task = m_head->next.fetch_add(1);
    if (task >= m_taskCount) {
      m_head->next.store(m_taskCount);  // lest many takers make it wrap around
      return std::nullopt;
    }
    std::uint32_t nobody = kNobody;
    if (m_owners[task].compare_exchange_strong(nobody, worker)) {
      return task;
    }
  }
}

void SharedBoard::beginStep(std::size_t slot, std::uint32_t task, std::uint64_t number,
                            std::string_view description) {
  Slot& own = m_slots[slot];
  own.task = task;
  own.number = number;
  own.descriptionLength =
      static_cast<std::uint32_t>(std::min(description.size(), kDescriptionLimit));
  std::copy_n(description.data(), own.descriptionLength, own.description);
  own.startedAt.store(monotonicNow(), std::memory_order_release);
}

void SharedBoard::endStep(std::size_t slot) {
  m_slots[slot].startedAt.store(0, std::memory_order_release);
}

std::uint32_t SharedBoard::ownerOf(std::uint32_t task) const {
  return m_owners[task].load();
}

void SharedBoard::assign(std::uint32_t task, std::uint32_t worker) {
  m_owners[task].store(worker);
}

void SharedBoard::rewind() {
  m_head->next.store(0);
}

std::optional<SharedBoard::Step> SharedBoard::currentStep(std::size_t slot) const {
  const Slot& its = m_slots[slot];
  const std::int64_t startedAt = its.startedAt.load(std::memory_order_acquire);
  if (startedAt == 0) {
    return std::nullopt;
  }
  return Step{its.task, its.number, startedAt, {its.description, its.descriptionLength}};
}

std::int64_t monotonicNow() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  constexpr std::int64_t kPerSecond = 1'000'000'000;
  return now.tv_sec * kPerSecond + now.tv_nsec;
}

#include "cli/workers/DeliveryOrder.h"

#include <utility>

DeliveryOrder::DeliveryOrder(PoolWork& work, std::uint32_t taskCount)
    : m_work(work), m_isFinished(taskCount), m_unfinished(taskCount) {}

void DeliveryOrder::receive(std::uint32_t task, std::string_view message) {
  add(task, {std::nullopt, std::string(message)});
}

void DeliveryOrder::lose(std::uint32_t task, std::string_view description, const WorkerLoss& loss) {
  add(task, {loss, std::string(description)});
}

void DeliveryOrder::finish(std::uint32_t task) {
  if (m_isFinished[task]) {
    return;
  }
  m_isFinished[task] = true;
  --m_unfinished;
  while (m_next < m_isFinished.size() && m_isFinished[m_next]) {
    m_work.finished(m_next);
    ++m_next;
    deliverHeldBack(m_next);
  }
}

void DeliveryOrder::giveUp() {
  while (!m_events.empty()) {
    const std::uint32_t task = m_events.begin()->first;
    deliverHeldBack(task);
    if (m_isFinished[task]) {
      m_work.finished(task);
    }
  }
}

void DeliveryOrder::add(std::uint32_t task, Event event) {
  if (task == m_next) {
    deliver(task, event);
  } else {
    m_heldBack += event.text.size();
    m_events[task].push_back(std::move(event));
  }
}

void DeliveryOrder::deliver(std::uint32_t task, const Event& event) {
  if (event.loss) {
    m_work.lost(task, event.text, *event.loss);
  } else {
    m_work.received(task, event.text);
  }
}

void DeliveryOrder::deliverHeldBack(std::uint32_t task) {
  const auto held = m_events.find(task);
  if (held == m_events.end()) {
    return;
  }
  for (const Event& event : held->second) {
    m_heldBack -= event.text.size();
    deliver(task, event);
  }
  m_events.erase(held);
}

#pragma once

#include <mutex>

/// A lock that one thread at a time holds; the same thread may enter it again.
class VELThreadCriticalSection {
 public:
  void enter() { m_mutex.lock(); }
  void leave() { m_mutex.unlock(); }

 private:
  std::recursive_mutex m_mutex;
};

/// Holds a critical section for the length of a scope.
class VELThreadGuard {
 public:
  explicit VELThreadGuard(VELThreadCriticalSection& section) : m_section(section) {
    m_section.enter();
  }
  ~VELThreadGuard() { m_section.leave(); }
  VELThreadGuard(const VELThreadGuard&) = delete;
  VELThreadGuard& operator=(const VELThreadGuard&) = delete;

 private:
  VELThreadCriticalSection& m_section;
};

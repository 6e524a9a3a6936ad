#pragma once

#include <mutex>

namespace orvdiff::host {

/// A lock that one thread at a time holds; that thread may enter it again. Stands in for the host's
/// own class, as does the guard (docs/host-classes.md).
class VELThreadCriticalSection {
 public:
  /// Waits until no other thread holds the lock, and takes it once more.
  void enter() { m_mutex.lock(); }
  /// Gives the lock back once. The calling thread must hold it.
  void leave() { m_mutex.unlock(); }

 private:
  std::recursive_mutex m_mutex;
};

/// Holds a critical section for the duration of a scope.
class VELThreadGuard {
 public:
  /// Enters `section`, which must outlive this object; the destructor leaves it.
  explicit VELThreadGuard(VELThreadCriticalSection& section) : m_section(section) {
    m_section.enter();
  }
  ~VELThreadGuard() { m_section.leave(); }
  VELThreadGuard(const VELThreadGuard&) = delete;
  VELThreadGuard& operator=(const VELThreadGuard&) = delete;

 private:
  VELThreadCriticalSection& m_section;
};

}  // namespace orvdiff::host

using orvdiff::host::VELThreadCriticalSection;
using orvdiff::host::VELThreadGuard;

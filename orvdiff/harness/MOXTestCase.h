#pragma once

#include <cstdint>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/VELThread.h"

/// A named group of checks in a test script, with their counts.
///
/// Created by `MOXTestHarness::startTest` and owned by the harness until the script ends. The
/// counters may be changed and read from any thread; each operation takes the test case's own lock.
class ORVDIFF_API MOXTestCase {
 public:
  /// Starts with all counts at 0. Scripts leave creating test cases to `MOXTestHarness::startTest`.
  explicit MOXTestCase(const std::string& name);
  MOXTestCase(const MOXTestCase&) = delete;
  MOXTestCase& operator=(const MOXTestCase&) = delete;
  ~MOXTestCase();

  /// The name as `startTest` was given it.
  std::string getName() const { return m_name; }

  /// Calls out of order while this test case was open.
  std::uint32_t getScriptErrors() const { return read(m_scriptErrors); }
  /// Checks by their verdict. A warned check does not make the script fail.
  std::uint32_t getChecksFailed() const { return read(m_checksFailed); }
  std::uint32_t getChecksPassed() const { return read(m_checksPassed); }
  std::uint32_t getChecksWarned() const { return read(m_checksWarned); }

  /// For a script that imports counts from elsewhere.
  void setScriptErrors(std::uint32_t count) { write(m_scriptErrors, count); }
  void setChecksFailed(std::uint32_t count) { write(m_checksFailed, count); }
  void setChecksPassed(std::uint32_t count) { write(m_checksPassed, count); }
  void setChecksWarned(std::uint32_t count) { write(m_checksWarned, count); }

  /// Called by the harness for every check; exact even if many threads do so at once.
  void incrementScriptErrors() { increment(m_scriptErrors); }
  void incrementChecksFailed() { increment(m_checksFailed); }
  void incrementChecksPassed() { increment(m_checksPassed); }
  void incrementChecksWarned() { increment(m_checksWarned); }

 private:
  std::uint32_t read(const std::uint32_t& counter) const;
  void write(std::uint32_t& counter, std::uint32_t count);
  void increment(std::uint32_t& counter);

  const std::string m_name;
  std::uint32_t m_scriptErrors = 0;
  std::uint32_t m_checksFailed = 0;
  std::uint32_t m_checksPassed = 0;
  std::uint32_t m_checksWarned = 0;
  mutable VELThreadCriticalSection m_lock;
};

// The stopwatch, the memory capture and the own-time counters of MOXTestHarness. A call in the
// wrong state is a script error and changes nothing.

#include <algorithm>
#include <limits>

#include "orvdiff/harness/MOXTestHarness.h"
#include "orvdiff/platform/VELUtMemory.h"

namespace {

/// Processor time of this process in milliseconds; never 0, which means "not taken".
std::int64_t cpuClock() {
  constexpr std::clock_t kTicksPerMillisecond = CLOCKS_PER_SEC / 1000;
  return std::max<std::int64_t>(1, std::clock() / kTicksPerMillisecond);
}

std::int64_t wholeSeconds(std::time_t stop, std::time_t start) {
  // Signed: the clock may have been set back.
  return static_cast<std::int64_t>(std::difftime(stop, start));
}

}  // namespace

bool MOXTestHarness::isTimerRunning() const {
  return (m_cpuStart != 0 && m_cpuStop == 0) || (m_wallStart != 0 && m_wallStop == 0);
}

void MOXTestHarness::startTimer() {
  if (m_cpuStart != 0 || m_wallStart != 0) {  // stopping is not enough, it must be reset
    logScriptError(">> Script Error: startTimer() called while timer is running");
    return;
  }
  m_cpuStart = cpuClock();
  m_wallStart = std::time(nullptr);
  logLine("Start Timer:", MOXLogLevel::Concise);
}

void MOXTestHarness::stopTimer() {
  if (!isTimerRunning()) {
    logScriptError(">> Script Error: stopTimer() called while timer not running");
    return;
  }
  m_cpuStop = cpuClock();
  m_wallStop = std::time(nullptr);
  logLine("Stop Timer:", MOXLogLevel::Concise);
}

void MOXTestHarness::resetTimer() {
  if (isTimerRunning()) {
    logScriptError(">> Script Error: resetTimer() called while timer is running");
    return;
  }
  m_cpuStart = m_cpuStop = 0;
  m_wallStart = m_wallStop = 0;
  logLine("Reset Timer:", MOXLogLevel::Concise);
}

std::uint64_t MOXTestHarness::getTimer(bool elapsed, bool includeOwnTime) {
  if (isTimerRunning()) {
    logScriptError(">> Script Error: getTimer() called while timer is running");
    return 0;
  }
  std::int64_t reading = elapsed ? wholeSeconds(m_wallStop, m_wallStart) : m_cpuStop - m_cpuStart;
  if (!includeOwnTime) {
    const VELThreadGuard guard(m_ownTimeLock);
    reading -= elapsed ? m_ownSeconds : m_ownCpuTicks;
  }
  // Below zero if checks outside the interval took longer than the interval.
  reading = std::max<std::int64_t>(0, reading);
  const std::string line = "Get Timer: " + std::to_string(reading) +
                           (elapsed ? " seconds of elapsed" : " milliseconds of CPU") + " time " +
                           (includeOwnTime ? "including" : "excluding") + " MOX time";
  logLine(line.c_str(), MOXLogLevel::Normal);
  return static_cast<std::uint64_t>(reading);
}

void MOXTestHarness::addOwnTime(int cpuTicks, int seconds) {
  const VELThreadGuard guard(m_ownTimeLock);
  m_ownCpuTicks += cpuTicks;
  m_ownSeconds += seconds;
}

void MOXTestHarness::startMemory() {
  if (m_memoryState == MemoryState::Capturing) {
    logScriptError(">> Script Error: startMemory() called while memory capture is running");
    return;
  }
  m_memoryState = MemoryState::Capturing;
  m_memoryLeaked = 0;
  logLine("Start Memory:", MOXLogLevel::Concise);
  m_memoryAtStart = VELUtMemory::getMemoryConsumption();  // last: writing the line may allocate
}

void MOXTestHarness::stopMemory() {
  if (m_memoryState != MemoryState::Capturing) {
    logScriptError(">> Script Error: stopMemory() called while memory capture not running");
    return;
  }
  // Read first: writing the line may allocate.
  const std::uint64_t now = VELUtMemory::getMemoryConsumption();
  const std::uint64_t gain = now > m_memoryAtStart ? now - m_memoryAtStart : 0;
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
  m_memoryLeaked = static_cast<std::uint32_t>(std::min(gain, kMost));
  m_memoryAtStart = 0;
  m_memoryState = MemoryState::Captured;
  logLine("Stop Memory:", MOXLogLevel::Concise);
}

std::uint32_t MOXTestHarness::getMemory() {
  switch (m_memoryState) {
    case MemoryState::Idle:
      logScriptError(">> Script Error: getMemory() called before a startMemory()");
      break;
    case MemoryState::Capturing:
      logScriptError(">> Script Error: getMemory() called while memory capture is running");
      break;
    case MemoryState::Captured:
      m_memoryState = MemoryState::Idle;
      const std::string line =
          "Get Memory: " + std::to_string(m_memoryLeaked) + " bytes have been leaked";
      logLine(line.c_str(), MOXLogLevel::Normal);
      break;
  }
  return m_memoryLeaked;  // after an error, too: the last amount, or 0
}

MOXOverheadTimer::MOXOverheadTimer() : m_cpuStart(cpuClock()), m_wallStart(std::time(nullptr)) {}

MOXOverheadTimer::~MOXOverheadTimer() {
  try {
    MOXTestHarness::getInstance()->addOwnTime(
        static_cast<int>(cpuClock() - m_cpuStart),
        static_cast<int>(wholeSeconds(std::time(nullptr), m_wallStart)));
  } catch (...) {  // own time is bookkeeping; a check must not fail because of it
  }
}

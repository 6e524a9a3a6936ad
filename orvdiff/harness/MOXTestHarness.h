#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "orvdiff/harness/MOXTestCase.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/VELThread.h"

/// How much a harness writes. Each level also writes what the levels below it write.
///
/// A variable of this type holds a level and converts to its 32-bit value, which is what the
/// harness's operations take. Any other number works, too, like the known levels that it passes.
class MOXLogLevel {
 public:
  /// The levels.
  enum Value : std::int32_t {
    None = 0,      ///< the full banner only; no report
    Minimal = 1,   ///< script errors, failed and warned checks, a one-line report
    Concise = 2,   ///< passed checks, start and end of test cases, totals
    Normal = 3,    ///< descriptions, readings, dumps of up to 10 differing rows, the full report
    Detailed = 4,  ///< dumps with every differing row
  };

  /// A level by its name or its number.
  // NOLINTNEXTLINE(google-explicit-constructor): so that a level is set by its name
  constexpr MOXLogLevel(Value level) : m_value(level) {}
  constexpr explicit MOXLogLevel(std::int32_t level) : m_value(level) {}

  /// The level's number.
  // NOLINTNEXTLINE(google-explicit-constructor): so that levels are passed and compared as numbers
  constexpr operator std::int32_t() const { return m_value; }

 private:
  std::int32_t m_value;
};

/// The process-wide log of a test script.
///
/// Calling order: `getInstance`, if wanted `setLogLevel` and `openLogFile`, `startScript`, then
/// per test case `startTest`, checks, `endTest`, and at last `endScript`. A call out of order is a
/// script error: it is written and counted (a script with script errors has failed) and has no
/// other effect. A script's mistakes never throw. Errors of the log's stream are ignored, but see
/// `isLogComplete`. A null text is written as "(null)".
///
/// The log is flushed after each failed or warned check, script error, and start or end of a test
/// case. A crash can lose only the passed checks after that.
///
/// Threads. Two kinds of thread use the harness: the script's own, which opens and closes things,
/// and any others, which run checks meanwhile.
///
/// - While a test case is open, every thread may run the checks, the `logCheck...` counters,
///   `lockOutput`, `addOwnTime` and the comparisons of memory and strings. A check compares without
///   a lock, counts under its test case's lock, and writes under the output lock.
/// - `logMessage`, `writeText` and `dumpDifferences` may run on any thread that holds the output
///   with `lockOutput(true)`.
/// - Everything else belongs to the script's own thread. What changes the level, the log or the
///   open test case (`setLogLevel`, `openLogFile`, `closeLogFile`, `startTest`, `endTest`,
///   `endScript`) must not run while another thread checks: checks read these without a lock.
class ORVDIFF_API MOXTestHarness {
 public:
  /// The harness of this process, created on first call and owned by the library. The first call
  /// must come before other threads use the harness. If the environment variable
  /// MOX_EFFECTIVE_WORKING_DIR is set, creation makes that folder the working folder. A relative
  /// value means the same folder for every later harness of the process. Never delete the pointer.
  static MOXTestHarness* getInstance();

  MOXTestHarness(const MOXTestHarness&) = delete;
  MOXTestHarness& operator=(const MOXTestHarness&) = delete;

  /// Opens the script and writes the banner to the console and to the log file. `description` may
  /// be null.
  void startScript(const char* description);

  /// Closes the script: writes the results table to the log, and to the console if
  /// `reportToConsoleToo`; then destroys this harness, which invalidates every pointer to it.
  /// Returns 1 if the script passed and 0 if a check failed or a script error occurred; always 1 at
  /// level None, where nothing is evaluated.
  int endScript(bool reportToConsoleToo);

  /// Opens a test case; checks count in it from now on. One that is still open ends.
  /// `description` may be null.
  void startTest(const char* name, const char* description);

  /// Closes the open test case. Returns 0.
  int endTest();

  /// Sets the level (one of `MOXLogLevel`, or any other number) and returns the previous one. A
  /// change is written to the log if one is open.
  int setLogLevel(int level);

  /// The current level.
  int getLogLevel() const { return m_logLevel; }

  /// Sends the log to a file: "results.mxr" when `fileName` is null. Truncates the file, or appends
  /// to it when `atEnd`. Closes a log file that was open. Returns false when the file cannot be
  /// opened; output is then lost until `closeLogFile`.
  bool openLogFile(const char* fileName, bool atEnd);

  /// Closes the log file, so that output goes to the console again. Returns whether a file was
  /// open.
  bool closeLogFile();

  /// Flushes the log and returns whether everything written to it since it was opened arrived;
  /// false also if the log file could not be opened. After `endScript`, while there is no harness,
  /// it answers for the log of the script that ended last, including its report; true if there was
  /// no script.
  static bool isLogComplete();

  /// The stream that the log goes to. Without a log file, the console becomes the log and stays it.
  std::ostream& getLogStream();

  /// The open test case, or null. It lives until `endScript`.
  MOXTestCase* getCurrentTest() const { return m_currentTest; }

  /// Writes `text` when `level` is at most the current level; adds no line end. Flushes after
  /// a line end at level Minimal. Returns the stream, even if nothing was written.
  std::ostream& logMessage(const char* text, int level);

  /// Writes `message` and "\r\n" at level Minimal, and counts a script error.
  void logScriptError(const char* message);

  /// Takes (`enter`) or releases the output lock for the calling thread, so that several lines stay
  /// together. Calls may nest; a release by a thread that does not hold the lock is ignored.
  void lockOutput(bool enter);

  /// Writes `text` to the harness's log, whatever the level; adds no line end.
  static void writeText(const char* text);

  /// Count a check in the open test case; the caller writes its line. Return 1; or 0, with a script
  /// error, if no test case is open.
  int logCheckPass();
  int logCheckFail();
  int logCheckWarn();

  /// Checks that two files contain the same bytes; a difference is a failure or, in the second
  /// form, a warning, and is shown as a dump of 128 bytes. Returns 1 if they are equal and were
  /// counted. A file that cannot be opened (such as a folder) or read is a difference. Files may
  /// have any size; memory use does not depend on it.
  int check_file(const char* name, const char* actualFile, const char* expectedFile);
  int check_file_warn(const char* name, const char* actualFile, const char* expectedFile);

  /// Checks that two blocks of `length` bytes are equal; otherwise as the file checks. A null block
  /// is a difference.
  int checkMemory(const char* name, const void* actual, const void* expected, std::uint32_t length);
  int checkMemoryWarn(const char* name, const void* actual, const void* expected,
                      std::uint32_t length);

  /// Writes the rows of 16 bytes in which two blocks of `count` bytes differ, and the totals, at
  /// level Normal and above; below Detailed it stops after 10 rows. `baseOffset` is the offset of
  /// the first byte. Either block may be null. Hold the output with `lockOutput` if checks
  /// run on other threads.
  void dumpDifferences(const void* actual, const void* expected, std::uint32_t count,
                       std::int64_t baseOffset);

  /// False if a pointer is null. Write and count nothing; safe on any thread.
  static bool isMemoryEqual(const void* a, const void* b, std::uint32_t length);
  static bool isStringEqual(const char* a, const char* b);

  /// The stopwatch: start, stop, read any number of times, reset before the next start.
  void startTimer();
  void stopTimer();
  void resetTimer();

  /// The stopped interval: whole seconds of calendar time when `elapsed`, else milliseconds of
  /// processor time. Without `includeOwnTime`, all time that this harness has ever spent in its
  /// file and memory checks is subtracted; the reading is never below 0. Returns 0 while running.
  std::uint64_t getTimer(bool elapsed, bool includeOwnTime);

  /// The memory capture: start, stop, read once.
  void startMemory();
  void stopMemory();

  /// Bytes that the process gained between start and stop of the last capture, 0 when it shrank,
  /// and at most 4 GiB - 1.
  std::uint32_t getMemory();

  /// Adds time spent inside the harness: `cpuTicks` in milliseconds. Safe on any thread.
  void addOwnTime(int cpuTicks, int seconds);

 private:
  MOXTestHarness();
  ~MOXTestHarness();

  struct Destroy {
    void operator()(MOXTestHarness* harness) const;
  };
  using Owner = std::unique_ptr<MOXTestHarness, Destroy>;
  static ORVDIFF_NO_EXPORT Owner s_instance;

  std::ostream& stream() const;
  void logLine(const char* text, int level);

  struct Verdict;
  bool countVerdict(const Verdict& verdict, const char* scriptError);
  void writeHeadline(const Verdict& verdict, const char* kind, const char* name);
  int countCheck(void (MOXTestCase::*increment)(), const char* scriptError);
  int checkFiles(const char* name, const char* actualFile, const char* expectedFile, bool warn);
  int checkBlocks(const char* name, const void* actual, const void* expected, std::uint32_t length,
                  bool warn);
  bool isTimerRunning() const;

  std::string m_logFileName;
  std::ostream* m_logStream = nullptr;  // null: the console, not yet adopted
  std::unique_ptr<std::ofstream> m_ownedLogFile;
  std::int32_t m_logLevel = MOXLogLevel::None;
  bool m_scriptActive = false;
  std::uint32_t m_otherScriptErrors = 0;  // outside every test case

  std::int64_t m_cpuStart = 0;  // processor time in milliseconds; 0: not taken
  std::int64_t m_cpuStop = 0;
  std::time_t m_wallStart = 0;  // 0: not taken
  std::time_t m_wallStop = 0;
  std::int64_t m_ownCpuTicks = 0;
  std::int64_t m_ownSeconds = 0;

  enum class MemoryState { Idle, Capturing, Captured };
  MemoryState m_memoryState = MemoryState::Idle;
  std::uint64_t m_memoryAtStart = 0;
  std::uint32_t m_memoryLeaked = 0;

  std::vector<std::unique_ptr<MOXTestCase>> m_tests;
  MOXTestCase* m_currentTest = nullptr;

  VELThreadCriticalSection m_outputLock;
  std::atomic<std::thread::id> m_outputHolder{};  // who holds the lock through `lockOutput`
  int m_outputDepth = 0;                          // how many times; guarded by the lock
  VELThreadCriticalSection m_ownTimeLock;         // guards the two own times
};

/// Adds the time from its construction to its destruction to the harness's own time.
class ORVDIFF_API MOXOverheadTimer {
 public:
  MOXOverheadTimer();
  MOXOverheadTimer(const MOXOverheadTimer&) = delete;
  MOXOverheadTimer& operator=(const MOXOverheadTimer&) = delete;
  ~MOXOverheadTimer();

 private:
  const std::int64_t m_cpuStart;
  const std::time_t m_wallStart;
};

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
struct MOXLogLevel {
  enum Value : std::int32_t {
    None = 0,      ///< the full banner only; no report
    Minimal = 1,   ///< script errors, failed and warned checks, a one-line report
    Concise = 2,   ///< passed checks, start and end of test cases, totals
    Normal = 3,    ///< descriptions, readings, dumps of up to 10 differing rows, the full report
    Detailed = 4,  ///< dumps with every differing row
  };
};

/// The process-wide log of a test script.
///
/// Calling order: `getInstance`, if wanted `setLogLevel` and `openLogFile`, `startScript`, then
/// per test case `startTest`, checks, `endTest`, and at last `endScript`. A call out of order is a
/// script error: it is written and counted (a script with script errors has failed) and otherwise
/// has no effect. Nothing here throws for what a script does wrong, and errors of the log's stream
/// are ignored. A null text is written as "(null)".
///
/// Threads: the check operations may run on any thread while a test case is open. Everything else
/// belongs to the script's own thread; to write from another one, or while checks run elsewhere,
/// bracket the call with `lockOutput(true)` and `lockOutput(false)`.
class ORVDIFF_API MOXTestHarness {
 public:
  /// The harness of this process, created on first call and owned by the library. The first call
  /// must come before other threads use the harness. When the environment variable
  /// MOX_EFFECTIVE_WORKING_DIR is set, creation makes that folder the working folder.
  static MOXTestHarness* getInstance();

  MOXTestHarness(const MOXTestHarness&) = delete;
  MOXTestHarness& operator=(const MOXTestHarness&) = delete;
  ~MOXTestHarness();

  /// Opens the script and writes the banner to the console and to the log file. `description` may
  /// be null.
  void startScript(const char* description);

  /// Closes the script: writes the results table to the log, and to the console if
  /// `reportToConsoleToo`; then destroys this harness, so that every pointer to it is void. Returns
  /// 1 when the script passed, 0 when a check failed or a script error was made; always 1 at level
  /// None, where nothing is evaluated.
  int endScript(bool reportToConsoleToo);

  /// Opens a test case, into which checks count from now on; one that is still open ends.
  /// `description` may be null.
  void startTest(const char* name, const char* description);

  /// Closes the open test case. Returns 0.
  int endTest();

  /// Sets the level (one of `MOXLogLevel`, or any other number) and returns the previous one. A
  /// change is noted in the log once that has a destination.
  int setLogLevel(int level);
  int getLogLevel() const { return m_logLevel; }

  /// Sends the log to a file: "results.mxr" when `fileName` is null. Truncates the file, or appends
  /// to it when `atEnd`. Closes a log file that was open. Returns false when the file cannot be
  /// opened; the log is then lost until `closeLogFile`.
  bool openLogFile(const char* fileName, bool atEnd);

  /// Closes the log file, so that the log goes to the console. Returns whether one was open.
  bool closeLogFile();

  /// Whether everything that was written to the log file that was closed last, in this process,
  /// reached it, the results table of `endScript` included. False before the first one is closed.
  static bool isLastLogComplete();

  /// Where the log goes; without a log file the console becomes, and stays, the log.
  std::ostream& getLogStream();

  /// The open test case, or null. It lives until `endScript`.
  MOXTestCase* getCurrentTest() const { return m_currentTest; }

  /// Writes `text` when `level` is at most the current level; adds no line end. Returns the stream
  /// that `text` goes to at a sufficient level.
  std::ostream& logMessage(const char* text, int level);

  /// Writes `message`, with "\r\n" behind it, at level Minimal and counts a script error.
  void logScriptError(const char* message);

  /// Holds (`enter`) and releases the log for the calling thread, so that several lines stay
  /// together. Pairs may nest; a release without a hold is ignored.
  void lockOutput(bool enter);

  /// Writes `text` to the harness's log, whatever the level; adds no line end.
  static void writeText(const char* text);

  /// Count a check of the open test case; the caller writes the check's own line. Return 1, or 0
  /// and a script error when no test case is open.
  int logCheckPass();
  int logCheckFail();
  int logCheckWarn();

  /// Checks that two files hold the same bytes; a difference is a failure or, in the second form, a
  /// warning, and is shown as a dump of 128 bytes. Returns 1 when they are equal and counted. A
  /// file that cannot be opened (a folder cannot) or read is a difference. Memory use does not
  /// depend on the files' sizes, which are not limited.
  int check_file(const char* name, const char* actualFile, const char* expectedFile);
  int check_file_warn(const char* name, const char* actualFile, const char* expectedFile);

  /// Checks that two blocks of `length` bytes are equal; otherwise as the file checks. A null block
  /// is a difference.
  int checkMemory(const char* name, const void* actual, const void* expected, std::uint32_t length);
  int checkMemoryWarn(const char* name, const void* actual, const void* expected,
                      std::uint32_t length);

  /// Writes the rows of 16 bytes in which two blocks of `count` bytes differ, and the totals, at
  /// level Normal and above; below Detailed it stops after 10 rows. `baseOffset` is the offset of
  /// the first byte. Either block may be null. Needs `lockOutput` where checks run on other
  /// threads.
  void dumpDifferences(const void* actual, const void* expected, std::uint32_t count,
                       std::int64_t baseOffset);

  /// False when a pointer is null. Write and count nothing; safe from any thread.
  static bool isMemoryEqual(const void* a, const void* b, std::uint32_t length);
  static bool isStringEqual(const char* a, const char* b);

  /// The stopwatch: start, stop, read as often as wanted, reset before the next start.
  void startTimer();
  void stopTimer();
  void resetTimer();

  /// The stopped interval: whole seconds of calendar time when `elapsed`, else milliseconds of
  /// processor time. Without `includeOwnTime` all time that this harness ever spent inside its file
  /// and memory checks is taken off; the reading is never below 0. Returns 0 while running.
  std::uint64_t getTimer(bool elapsed, bool includeOwnTime);

  /// The memory capture: start, stop, read once.
  void startMemory();
  void stopMemory();

  /// Bytes that the process gained between start and stop of the last capture, 0 when it shrank,
  /// and at most 4 GiB - 1.
  std::uint32_t getMemory();

  /// Adds time spent inside the harness: `cpuTicks` in milliseconds. Safe from any thread.
  void addOwnTime(int cpuTicks, int seconds);

 private:
  MOXTestHarness();

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
  std::uint32_t m_otherScriptErrors = 0;  // those made while no test case was open

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
  std::atomic<std::thread::id> m_outputHolder{};  // who holds the output through `lockOutput`
  int m_outputDepth = 0;                          // how often; guarded by the output lock
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

#pragma once

#include <string>
#include <vector>

#include "cli/system/OutputPlace.h"
#include "orvdiff/logs/OrvDiffMoxLog.h"

/// Runs a verification as a script of the test harness: one test case per report, one check per
/// pair, everything in a log file.
class HarnessLog {
 public:
  /// Opens the file at `place`, which must outlive the log, and claims it; raises `CommandError`
  /// when that is not possible. `level` is one of `MOXLogLevel`. The harness is not asked where to
  /// work: that has been decided, and the variable that moves test scripts elsewhere would have
  /// another suite verified.
  HarnessLog(OutputPlace& place, int level);
  HarnessLog(const HarnessLog&) = delete;
  HarnessLog& operator=(const HarnessLog&) = delete;
  /// Ends the script if it was started, and `finish` has not.
  ~HarnessLog();

  /// Starts the script.
  void start();

  /// Ends the script, with a failed check for each of `problems`: what kept the run from
  /// verifying all that it was to. Raises `CommandError` when the log did not reach the file whole.
  void finish(const std::vector<std::string>& problems);

  /// Hands results to the harness, names as they are.
  OrvDiffListener& listener() { return m_listener; }

  /// A report's test case, from construction to destruction. Does nothing when there is no log.
  class TestCase {
   public:
    TestCase(HarnessLog* log, const std::string& report);
    TestCase(const TestCase&) = delete;
    TestCase& operator=(const TestCase&) = delete;
    ~TestCase();

    /// The verification of the report ended with an error.
    void fail(const std::string& message) const;

    /// Something to know about the report, which is no failure.
    void note(const char* message) const;

   private:
    HarnessLog* const m_log;
  };

 private:
  class Listener : public OrvDiffMoxLog {
   public:
    void logCheck(const char* description, bool passed) override;
    MOXTestHarness* getHarness() override { return MOXTestHarness::getInstance(); }
  };

  void endScript();

  const OutputPlace& m_place;
  bool m_isRunning = false;
  Listener m_listener;
};

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
  /// Ends the script if it was started and `finish` has not been called, with a failed check: the
  /// run was cut short by an error.
  ~HarnessLog();

  /// Starts the script.
  void start();

  /// Ends the script, with a failed check for each of `problems`: what kept the run from
  /// verifying all that it was to. Raises `CommandError` when the log did not reach the file whole.
  void finish(const std::vector<std::string>& problems);

  /// Hands results to the harness, names as they are.
  OrvDiffListener& listener() { return m_listener; }

  /// Starts the test case of `report`, unless a test case is running.
  void startReport(const std::string& report);

  /// The verification of the report whose test case is running ended with an error.
  void fail(const std::string& message);

  /// Something to know about the report, which is no failure.
  void note(const char* message);

  /// Ends the test case that is running, if one is.
  void endReport();

 private:
  class Listener : public OrvDiffMoxLog {
   public:
    void logCheck(const char* description, bool passed) override;
    MOXTestHarness* getHarness() override { return MOXTestHarness::getInstance(); }
  };

  const OutputPlace& m_place;
  bool m_isRunning = false;
  bool m_isInReport = false;
  Listener m_listener;
};

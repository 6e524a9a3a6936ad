#pragma once

#include <string>

#include "orvdiff/logs/OrvDiffMoxLog.h"

/// Runs a verification as a script of the test harness: one test case per report, one check per
/// pair, everything in a log file.
class HarnessLog {
 public:
  /// Starts the script in `path`; raises `Trouble` when the file cannot be opened. `level` is one
  /// of `MOXLogLevel`.
  HarnessLog(std::string path, int level);
  HarnessLog(const HarnessLog&) = delete;
  HarnessLog& operator=(const HarnessLog&) = delete;
  /// Ends the script if `finish` has not.
  ~HarnessLog();

  /// Ends the script; raises `Trouble` when the log did not reach the file whole.
  void finish();

  OrvDiffListener& listener() { return m_listener; }

  /// A report's test case, from construction to destruction. Does nothing when there is no log.
  class TestCase {
   public:
    TestCase(HarnessLog* log, const std::string& report);
    TestCase(const TestCase&) = delete;
    TestCase& operator=(const TestCase&) = delete;
    ~TestCase();

    /// The verification of the report ended with an error.
    void fail(const char* message) const;

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

  const std::string m_path;
  bool m_isOpen = true;
  Listener m_listener;
};

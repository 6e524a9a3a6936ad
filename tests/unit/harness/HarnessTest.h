#pragma once

#include "orvdiff/harness/MOXTestHarness.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Testing.h"

/// Runs in an empty working folder of its own, with a fresh harness and the console captured.
class HarnessTest : public testing::Test {
 public:
  ~HarnessTest() override {
    harness().getLogStream().exceptions(std::ios::goodbit);
    harness().endScript(false);
  }

 protected:
  static MOXTestHarness& harness() { return *MOXTestHarness::getInstance(); }
  std::string console() const { return m_console.text(); }

  /// Opens a script with a test case, and a log file behind it, so that the log starts empty.
  static void startTest(int level) {
    harness().setLogLevel(level);
    harness().startScript(nullptr);
    harness().startTest("test", nullptr);
    harness().openLogFile("log", false);
  }

  /// What the log holds so far.
  static std::string log() {
    harness().getLogStream().flush();
    return TestFolder::read("log");
  }

  /// What `action` writes to a log of its own.
  template <typename Action>
  static std::string logOf(Action action) {
    harness().openLogFile("log", false);
    action();
    return log();
  }

 private:
  const TestFolder m_folder;
  const CapturedOutput m_console;
};

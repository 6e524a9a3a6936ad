#include "cli/HarnessLog.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "cli/Printable.h"
#include "cli/QuietConsole.h"
#include "cli/Trouble.h"

namespace {

/// Every report of the harness ends with a frame character and a line end. A log on a full disk
/// does not. What is no regular file (a pipe) cannot be read back, and is trusted.
bool endsWithReport(const std::string& path) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) {
    return true;
  }
  std::ifstream log(path, std::ios::binary);
  log.seekg(-2, std::ios::end);
  return log.get() == '=' && log.get() == '\n';
}

}  // namespace

HarnessLog::HarnessLog(std::string path, int level) : m_path(std::move(path)) {
  unsetenv("MOX_EFFECTIVE_WORKING_DIR");
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  harness.setLogLevel(level);
  errno = 0;
  if (!harness.openLogFile(m_path.c_str(), false)) {
    throw Trouble("the harness log " + m_path +
                  " cannot be written: " + std::generic_category().message(errno));
  }
}

void HarnessLog::start() {
  m_isRunning = true;
  const QuietConsole quiet;
  MOXTestHarness::getInstance()->startScript("Verification of report outputs");
}

HarnessLog::~HarnessLog() {
  if (m_isRunning) {
    endScript();
  }
}

void HarnessLog::endScript() {
  m_isRunning = false;
  MOXTestHarness::getInstance()->endScript(false);
}

void HarnessLog::finish(const std::vector<std::string>& shortfalls) {
  if (!shortfalls.empty()) {
    MOXTestHarness::getInstance()->startTest("(the run)", "What kept it from verifying all");
    for (const std::string& shortfall : shortfalls) {
      m_listener.logCheck(printable(shortfall).c_str(), false);
    }
    MOXTestHarness::getInstance()->endTest();
  }
  endScript();
  if (!endsWithReport(m_path)) {
    throw Trouble("the harness log " + m_path +
                  " could not be written to its end; is the disk full?");
  }
}

HarnessLog::TestCase::TestCase(HarnessLog* log, const std::string& report) : m_log(log) {
  if (m_log != nullptr) {
    // The results table has room for a name, not for a path; that is the description.
    const std::string name = printable(std::filesystem::path(report).stem().string());
    MOXTestHarness::getInstance()->startTest(name.c_str(), printable(report).c_str());
  }
}

HarnessLog::TestCase::~TestCase() {
  if (m_log != nullptr) {
    MOXTestHarness::getInstance()->endTest();
  }
}

void HarnessLog::TestCase::fail(const std::string& message) const {
  if (m_log != nullptr) {
    m_log->m_listener.logCheck(printable(message).c_str(), false);
  }
}

void HarnessLog::TestCase::note(const char* message) const {
  if (m_log != nullptr) {
    MOXTestHarness& harness = *MOXTestHarness::getInstance();
    harness.logMessage((std::string(message) + '\n').c_str(), MOXLogLevel::Concise);
  }
}

void HarnessLog::Listener::logCheck(const char* description, bool passed) {
  MOXTestHarness& harness = *getHarness();
  const int level = passed ? MOXLogLevel::Concise : MOXLogLevel::Minimal;
  harness.lockOutput(true);
  for (const char* const piece : {passed ? "PASSED: " : ">>  FAILED: ", description, "\n"}) {
    harness.logMessage(piece, level);
  }
  harness.lockOutput(false);
  passed ? harness.logCheckPass() : harness.logCheckFail();
}

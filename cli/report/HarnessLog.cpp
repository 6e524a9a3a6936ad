#include "cli/report/HarnessLog.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/system/CommandError.h"
#include "cli/system/QuietConsole.h"
#include "cli/terminal/Printable.h"

HarnessLog::HarnessLog(OutputPlace& place, int level) : m_place(place) {
  unsetenv("MOX_EFFECTIVE_WORKING_DIR");
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  harness.setLogLevel(level);
  errno = 0;
  if (!harness.openLogFile(place.name().c_str(), false)) {
    place.refuse(std::generic_category().message(errno));
  }
  place.claim();
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

void HarnessLog::finish(const std::vector<std::string>& problems) {
  if (!problems.empty()) {
    MOXTestHarness::getInstance()->startTest("(the run)", "What kept it from verifying all");
    for (const std::string& problem : problems) {
      m_listener.logCheck(printable(problem).c_str(), false);
    }
    MOXTestHarness::getInstance()->endTest();
  }
  endScript();
  if (!MOXTestHarness::isLogComplete()) {
    throw CommandError("the harness log " + m_place.name() +
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

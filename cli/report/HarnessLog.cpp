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
  if (!m_isRunning) {
    return;
  }
  try {
    finish({"the run ended early, with an error"});
  } catch (...) {  // NOLINT(bugprone-empty-catch): the log lacks its end, which says enough
  }
}

void HarnessLog::finish(const std::vector<std::string>& problems) {
  m_isRunning = false;
  endReport();
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  if (!problems.empty()) {
    harness.startTest("(the run)", "Problems of the run as a whole");
    for (const std::string& problem : problems) {
      fail(problem);
    }
    harness.endTest();
  }
  harness.endScript(false);
  if (!MOXTestHarness::isLogComplete()) {
    throw CommandError("the harness log " + m_place.name() +
                       " could not be written completely; is the disk full?");
  }
}

void HarnessLog::startReport(const std::string& report) {
  if (!m_isInReport) {
    // The results table has room for a name, not for a path; that is the description.
    const std::string name = printable(std::filesystem::path(report).stem().string());
    MOXTestHarness::getInstance()->startTest(name.c_str(), printable(report).c_str());
    m_isInReport = true;
  }
}

void HarnessLog::fail(const std::string& message) {
  m_listener.logCheck(printable(message).c_str(), false);
}

void HarnessLog::note(const char* message) {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  harness.logMessage((std::string(message) + '\n').c_str(), MOXLogLevel::Concise);
}

void HarnessLog::endReport() {
  if (m_isInReport) {
    m_isInReport = false;
    MOXTestHarness::getInstance()->endTest();
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

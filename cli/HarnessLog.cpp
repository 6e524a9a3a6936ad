#include "cli/HarnessLog.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

#include "cli/Trouble.h"

namespace {

/// Keeps the harness's banner off the console while it lives: there, the program itself speaks.
class QuietConsole {
 public:
  QuietConsole() : m_buffer(std::cout.rdbuf(nullptr)) {}
  QuietConsole(const QuietConsole&) = delete;
  QuietConsole& operator=(const QuietConsole&) = delete;
  ~QuietConsole() {
    std::cout.rdbuf(m_buffer);  // also clears the error of writing to nothing
  }

 private:
  std::streambuf* const m_buffer;
};

/// Every report of the harness ends with a frame character and a line end. A log on a full disk
/// does not. What cannot be read back (a pipe) is trusted.
bool endsWithReport(const std::string& path) {
  std::ifstream log(path, std::ios::binary | std::ios::ate);
  if (!log || log.tellg() < 2) {
    return !log || !log.good();
  }
  log.seekg(-2, std::ios::end);
  return log.get() == '=' && log.get() == '\n';
}

}  // namespace

HarnessLog::HarnessLog(std::string path, int level) : m_path(std::move(path)) {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  harness.setLogLevel(level);
  if (!harness.openLogFile(m_path.c_str(), false)) {
    throw Trouble("the harness log " + m_path + " cannot be written");
  }
  const QuietConsole quiet;
  harness.startScript("Verification of report outputs");
}

HarnessLog::~HarnessLog() {
  if (m_isOpen) {
    endScript();
  }
}

void HarnessLog::endScript() {
  m_isOpen = false;
  MOXTestHarness::getInstance()->endScript(false);
}

void HarnessLog::finish() {
  endScript();
  if (!endsWithReport(m_path)) {
    throw Trouble("the harness log " + m_path +
                  " could not be written to its end; is the disk full?");
  }
}

HarnessLog::TestCase::TestCase(HarnessLog* log, const std::string& report) : m_log(log) {
  if (m_log != nullptr) {
    // The results table has room for a name, not for a path; that is the description.
    const std::string name = std::filesystem::path(report).stem().string();
    MOXTestHarness::getInstance()->startTest(name.c_str(), report.c_str());
  }
}

HarnessLog::TestCase::~TestCase() {
  if (m_log != nullptr) {
    MOXTestHarness::getInstance()->endTest();
  }
}

void HarnessLog::TestCase::fail(const char* message) const {
  if (m_log != nullptr) {
    m_log->m_listener.logCheck(message, false);
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

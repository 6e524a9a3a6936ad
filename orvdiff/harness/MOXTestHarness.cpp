// The harness itself: its one instance, where the log goes, scripts and test cases. Checks are in
// MOXChecks.cpp, timers and memory capture in MOXTimers.cpp.

#include "orvdiff/harness/MOXTestHarness.h"

#include <cstdlib>
#include <iostream>

#include "orvdiff/harness/MOXFrame.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"

namespace {

// Owned here so that the log of a script that never reaches `endScript` is complete all the same
// when the process exits.
std::unique_ptr<MOXTestHarness> g_instance;

// Outlives the harness, which closes the log only as it goes.
bool g_isLastLogComplete = false;

// What the log shows for `text`: a script's null pointer stays visible and harmless.
const char* orNull(const char* text) {
  return text != nullptr ? text : "(null)";
}

// Levels beyond the known ones work by their number, but have no name.
const char* levelName(int level) {
  switch (level) {
    case MOXLogLevel::None:
      return "None";
    case MOXLogLevel::Minimal:
      return "Minimal";
    case MOXLogLevel::Concise:
      return "Concise";
    case MOXLogLevel::Normal:
      return "Normal";
    case MOXLogLevel::Detailed:
      return "Detailed";
    default:
      return "";
  }
}

}  // namespace

MOXTestHarness* MOXTestHarness::getInstance() {
  if (!g_instance) {
    g_instance = velGuardAllocation(
        VEL_HERE, [] { return std::unique_ptr<MOXTestHarness>(new MOXTestHarness); });
  }
  return g_instance.get();
}

MOXTestHarness::MOXTestHarness() {
  const char* folder = std::getenv("MOX_EFFECTIVE_WORKING_DIR");
  if (folder != nullptr && *folder != '\0') {
    VELFmDir::setEffectiveWorkingDir(folder);
  }
}

MOXTestHarness::~MOXTestHarness() {
  try {
    closeLogFile();
  } catch (...) {  // a script may have asked the stream to throw; there is no one left to tell
  }
  // A lock must not die while it is held, whatever the script forgot.
  while (m_outputHolder.load() == std::this_thread::get_id()) {
    lockOutput(false);
  }
}

int MOXTestHarness::setLogLevel(int level) {
  const int previous = m_logLevel;
  m_logLevel = level;
  if (level != previous && m_logStream != nullptr) {
    *m_logStream << "Set Log Level: " << levelName(level) << std::endl;
  }
  return previous;
}

bool MOXTestHarness::openLogFile(const char* fileName, bool atEnd) {
  m_logFileName = fileName != nullptr ? fileName : "results.mxr";
  closeLogFile();
  m_ownedLogFile = velGuardAllocation(VEL_HERE, [] { return std::make_unique<std::ofstream>(); });
  // Also when opening fails: a log that was meant for a file does not spill onto the console.
  m_logStream = m_ownedLogFile.get();
  m_ownedLogFile->open(m_logFileName, atEnd ? std::ios::app : std::ios::trunc);
  return m_ownedLogFile->is_open();
}

bool MOXTestHarness::closeLogFile() {
  if (m_ownedLogFile == nullptr) {
    return false;
  }
  // Forgotten first: a stream that throws while it is closed must not stay behind as the log.
  m_logStream = nullptr;
  const std::unique_ptr<std::ofstream> file = std::move(m_ownedLogFile);
  const bool wasOpen = file->is_open();
  g_isLastLogComplete = false;  // should closing throw
  file->close();
  g_isLastLogComplete = file->good();
  return wasOpen;
}

bool MOXTestHarness::isLastLogComplete() {
  return g_isLastLogComplete;
}

std::ostream& MOXTestHarness::getLogStream() {
  if (m_logStream == nullptr) {
    m_logStream = &std::cout;
  }
  return *m_logStream;
}

std::ostream& MOXTestHarness::stream() const {
  return m_logStream != nullptr ? *m_logStream : std::cout;
}

std::ostream& MOXTestHarness::logMessage(const char* text, int level) {
  std::ostream& out = stream();
  if (level <= m_logLevel) {
    out << orNull(text);
  }
  return out;
}

void MOXTestHarness::logLine(const char* text, int level) {
  logMessage(text, level);
  logMessage("\r\n", level);
}

void MOXTestHarness::logScriptError(const char* message) {
  logLine(message, MOXLogLevel::Minimal);
  if (m_currentTest != nullptr) {
    m_currentTest->incrementScriptErrors();
  } else {
    ++m_otherScriptErrors;
  }
}

void MOXTestHarness::lockOutput(bool enter) {
  const std::thread::id self = std::this_thread::get_id();
  if (enter) {
    m_outputLock.enter();
    m_outputHolder = self;
    ++m_outputDepth;
  } else if (m_outputHolder.load() == self) {  // unlocking what one does not hold is undefined
    if (--m_outputDepth == 0) {
      m_outputHolder = std::thread::id();
    }
    m_outputLock.leave();
  }
}

void MOXTestHarness::writeText(const char* text) {
  getInstance()->getLogStream() << orNull(text);
}

void MOXTestHarness::startScript(const char* description) {
  if (m_scriptActive) {
    logScriptError(">> Script Error: startScript() called inside test script");
    return;
  }
  m_scriptActive = true;
  const MOXBanner banner{m_logLevel, description};
  if (banner.isFramed()) {
    getLogStream();  // a framed banner makes the console the log when there is no other
  }
  const bool isConsoleTheLog = m_logStream == nullptr || m_logStream == &std::cout;
  banner.write(std::cout, isConsoleTheLog ? nullptr : &m_logFileName);
  if (!isConsoleTheLog) {
    banner.write(*m_logStream, nullptr);
  }
}

int MOXTestHarness::endScript(bool reportToConsoleToo) {
  if (!m_scriptActive) {
    logScriptError(">> Script Error: endScript() called outside test script");
  }
  // Not an early return: a script that only ends still gets its report, with this error in it.
  const MOXReport report(m_logLevel, m_tests, m_otherScriptErrors);
  report.write(stream());
  if (reportToConsoleToo) {
    report.write(std::cout);
  }
  const int passed = report.isFailed() ? 0 : 1;
  g_instance.reset();  // destroys this object
  return passed;
}

void MOXTestHarness::startTest(const char* name, const char* description) {
  if (!m_scriptActive) {
    logScriptError(">> Script Error: startTest() called outside test script");
    return;
  }
  m_currentTest = velGuardAllocation(VEL_HERE, [&] {
    m_tests.push_back(std::make_unique<MOXTestCase>(orNull(name)));
    return m_tests.back().get();
  });
  logMessage("------------------------- Start Test: ", MOXLogLevel::Concise);
  logMessage(name, MOXLogLevel::Concise);
  logMessage("\n", MOXLogLevel::Concise);
  if (description != nullptr) {
    logMessage(description, MOXLogLevel::Normal);
    logMessage("\n", MOXLogLevel::Normal);
  }
}

int MOXTestHarness::endTest() {
  if (m_currentTest == nullptr) {
    logScriptError(">> Script Error: endTest() called outside test case");
    return 0;
  }
  logMessage("\n------------------------- End Test: ", MOXLogLevel::Concise);
  logMessage(m_currentTest->getName().c_str(), MOXLogLevel::Concise);
  logMessage("\n\n", MOXLogLevel::Concise);
  m_currentTest = nullptr;
  return 0;
}

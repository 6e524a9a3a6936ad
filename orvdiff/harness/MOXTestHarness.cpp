// The harness itself: its one instance, where the log goes, scripts and test cases. Checks are in
// MOXChecks.cpp, timers and memory capture in MOXTimers.cpp.

#include "orvdiff/harness/MOXTestHarness.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>

#include "orvdiff/harness/MOXFrame.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"

namespace {

// Whether the log of the script that ended last is complete.
bool g_isEndedLogComplete = true;

// What the log shows for `text`: a script's null pointer is visible but harmless.
const char* shownText(const char* text) {
  return text != nullptr ? text : "(null)";
}

// Levels other than the known ones work by their number, but have no name.
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

// The folder that MOX_EFFECTIVE_WORKING_DIR names, or empty. A relative value is resolved when it
// is first seen: by the next script the process is already in that folder, and would look for the
// folder inside itself.
std::filesystem::path workingFolder() {
  static std::string resolvedValue;
  static std::filesystem::path folder;
  const char* const variable = std::getenv("MOX_EFFECTIVE_WORKING_DIR");
  const std::string value = variable != nullptr ? variable : "";
  if (value != resolvedValue) {
    std::error_code unresolved;
    folder = std::filesystem::absolute(value, unresolved);
    resolvedValue = value;
  }
  return folder;
}

}  // namespace

void MOXTestHarness::Destroy::operator()(MOXTestHarness* harness) const {
  delete harness;
}

// An owner, so that a script that never reaches `endScript` still has its whole log when the
// process exits.
MOXTestHarness::Owner MOXTestHarness::s_instance;

MOXTestHarness* MOXTestHarness::getInstance() {
  if (!s_instance) {
    s_instance = velGuardAllocation(VEL_HERE, [] { return Owner(new MOXTestHarness); });
  }
  return s_instance.get();
}

MOXTestHarness::MOXTestHarness() {
  const std::filesystem::path folder = workingFolder();
  if (!folder.empty()) {
    VELFmDir::setEffectiveWorkingDir(folder.c_str());
  }
}

MOXTestHarness::~MOXTestHarness() {
  try {
    closeLogFile();
  } catch (...) {  // a script can make the stream throw; a destructor cannot report it
  }
  // A lock must not be destroyed while it is held, even if the script forgot to release it.
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
  // Even if opening fails: a log meant for a file does not spill onto the console.
  m_logStream = m_ownedLogFile.get();
  m_ownedLogFile->open(m_logFileName, atEnd ? std::ios::app : std::ios::trunc);
  return m_ownedLogFile->is_open();
}

bool MOXTestHarness::closeLogFile() {
  // Reset first: a stream that throws in close() must not remain the log.
  m_logStream = nullptr;
  if (m_ownedLogFile == nullptr) {
    return false;
  }
  const std::unique_ptr<std::ofstream> file = std::move(m_ownedLogFile);
  const bool wasOpen = file->is_open();
  file->close();
  return wasOpen;
}

std::ostream& MOXTestHarness::getLogStream() {
  if (m_logStream == nullptr) {
    m_logStream = &std::cout;
  }
  return *m_logStream;
}

bool MOXTestHarness::isLogComplete() {
  return s_instance != nullptr ? s_instance->stream().flush().good() : g_isEndedLogComplete;
}

std::ostream& MOXTestHarness::stream() const {
  return m_logStream != nullptr ? *m_logStream : std::cout;
}

std::ostream& MOXTestHarness::logMessage(const char* text, int level) {
  std::ostream& out = stream();
  if (level <= m_logLevel) {
    const std::string_view piece = shownText(text);
    out << piece;
    // Failures, warnings and script errors must survive a crash: they may tell its cause.
    if (level <= MOXLogLevel::Minimal && !piece.empty() && piece.back() == '\n') {
      out.flush();
    }
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
  } else if (m_outputHolder.load() == self) {  // unlocking without holding is undefined
    if (--m_outputDepth == 0) {
      m_outputHolder = std::thread::id();
    }
    m_outputLock.leave();
  }
}

void MOXTestHarness::writeText(const char* text) {
  getInstance()->getLogStream() << shownText(text);
}

void MOXTestHarness::startScript(const char* description) {
  if (m_scriptActive) {
    logScriptError(">> Script Error: startScript() called inside test script");
    return;
  }
  m_scriptActive = true;
  const orvdiff::detail::MOXBanner banner{m_logLevel, description};
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
  // Ends the script even if its stream throws.
  const Owner ended = std::move(s_instance);
  g_isEndedLogComplete = false;
  if (!m_scriptActive) {
    logScriptError(">> Script Error: endScript() called outside test script");
  }
  // No early return: a script that was never started still gets its report, with this error in it.
  const orvdiff::detail::MOXReport report(m_logLevel, m_tests, m_otherScriptErrors);
  report.write(stream());
  if (reportToConsoleToo) {
    report.write(std::cout);
  }
  if (m_ownedLogFile != nullptr) {
    m_ownedLogFile->close();  // where some file systems first report that the disk is full
  } else {
    stream().flush();
  }
  g_isEndedLogComplete = stream().good();
  return report.isFailed() ? 0 : 1;
}

void MOXTestHarness::startTest(const char* name, const char* description) {
  if (!m_scriptActive) {
    logScriptError(">> Script Error: startTest() called outside test script");
    return;
  }
  m_currentTest = velGuardAllocation(VEL_HERE, [&] {
    m_tests.push_back(std::make_unique<MOXTestCase>(shownText(name)));
    return m_tests.back().get();
  });
  logMessage("------------------------- Start Test: ", MOXLogLevel::Concise);
  logMessage(name, MOXLogLevel::Concise);
  logMessage("\n", MOXLogLevel::Concise);
  if (description != nullptr) {
    logMessage(description, MOXLogLevel::Normal);
    logMessage("\n", MOXLogLevel::Normal);
  }
  stream().flush();
}

int MOXTestHarness::endTest() {
  if (m_currentTest == nullptr) {
    logScriptError(">> Script Error: endTest() called outside test case");
    return 0;
  }
  const MOXTestCase& ended = *m_currentTest;
  m_currentTest = nullptr;
  logMessage("\n------------------------- End Test: ", MOXLogLevel::Concise);
  logMessage(ended.getName().c_str(), MOXLogLevel::Concise);
  logMessage("\n\n", MOXLogLevel::Concise).flush();
  return 0;
}

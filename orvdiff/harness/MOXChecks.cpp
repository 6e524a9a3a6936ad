// The checks of MOXTestHarness, the one part that several threads may run at once.
//
// A check works in three steps, each with the least locking that is safe. It compares first, which
// takes by far the longest and touches nothing shared. It then counts its verdict under the lock of
// the open test case. Only then does it take the output lock, to write headline and dump as one
// block. So threads wait for each other only while one of them writes. The price: two checks may
// appear in the log in another order than they were counted in, which changes no total.
//
// `m_currentTest`, the level and the log stream are read without a lock. That is safe because the
// script's thread changes them only while no other thread checks; MOXTestHarness.h states the rule.

#include <cstring>

#include "orvdiff/harness/MOXDump.h"
#include "orvdiff/harness/MOXFileCheck.h"
#include "orvdiff/harness/MOXTestHarness.h"

/// How a check ended: the first word of its headline, the lowest level that shows it, and the
/// counter.
struct MOXTestHarness::Verdict {
  const char* word;
  int level;
  int (MOXTestHarness::*count)();

  static const Verdict& of(bool isEqual, bool warn);
};

const MOXTestHarness::Verdict& MOXTestHarness::Verdict::of(bool isEqual, bool warn) {
  static const Verdict passed{"PASSED: ", MOXLogLevel::Concise, &MOXTestHarness::logCheckPass};
  static const Verdict failed{">>  FAILED: ", MOXLogLevel::Minimal, &MOXTestHarness::logCheckFail};
  static const Verdict warned{">>  WARNED: ", MOXLogLevel::Minimal, &MOXTestHarness::logCheckWarn};
  return isEqual ? passed : warn ? warned : failed;
}

int MOXTestHarness::logCheckPass() {
  return countCheck(&MOXTestCase::incrementChecksPassed,
                    ">> Script Error: logCheckPass() called outside test script");
}

int MOXTestHarness::logCheckFail() {
  return countCheck(&MOXTestCase::incrementChecksFailed,
                    ">> Script Error: logCheckFail() called outside test script");
}

int MOXTestHarness::logCheckWarn() {
  return countCheck(&MOXTestCase::incrementChecksWarned,
                    ">> Script Error: logCheckWarn() called outside test script");
}

int MOXTestHarness::countCheck(void (MOXTestCase::*increment)(), const char* scriptError) {
  if (m_currentTest == nullptr) {
    logScriptError(scriptError);
    return 0;
  }
  (m_currentTest->*increment)();
  return 1;
}

int MOXTestHarness::check_file(const char* name, const char* actualFile, const char* expectedFile) {
  return checkFiles(name, actualFile, expectedFile, false);
}

int MOXTestHarness::check_file_warn(const char* name, const char* actualFile,
                                    const char* expectedFile) {
  return checkFiles(name, actualFile, expectedFile, true);
}

int MOXTestHarness::checkMemory(const char* name, const void* actual, const void* expected,
                                std::uint32_t length) {
  return checkBlocks(name, actual, expected, length, false);
}

int MOXTestHarness::checkMemoryWarn(const char* name, const void* actual, const void* expected,
                                    std::uint32_t length) {
  return checkBlocks(name, actual, expected, length, true);
}

// A check outside a test case is two script errors: one of the counter, one of the check.
bool MOXTestHarness::countVerdict(const Verdict& verdict, const char* scriptError) {
  if ((this->*verdict.count)() == 1) {
    return true;
  }
  logScriptError(scriptError);
  return false;
}

void MOXTestHarness::writeHeadline(const Verdict& verdict, const char* kind, const char* name) {
  for (const char* piece : {verdict.word, kind, name, "\n"}) {
    logMessage(piece, verdict.level);
  }
}

int MOXTestHarness::checkFiles(const char* name, const char* actualFile, const char* expectedFile,
                               bool warn) {
  const MOXOverheadTimer overhead;
  const std::optional<orvdiff::detail::MOXFileMismatch> mismatch =
      orvdiff::detail::moxCompareFiles(actualFile, expectedFile);
  const Verdict& verdict = Verdict::of(!mismatch, warn);
  if (!countVerdict(verdict, warn ? "check_file_warn() called outside test script"
                                  : "check_file() called outside test script")) {
    return 0;
  }
  const VELThreadGuard guard(m_outputLock);
  writeHeadline(verdict, "Check File: ", name);
  if (!mismatch) {
    return 1;
  }
  if (mismatch->error != nullptr) {
    logMessage(mismatch->error, MOXLogLevel::Normal);
  } else {
    dumpDifferences(mismatch->actual.data(), mismatch->expected.data(), mismatch->length,
                    mismatch->offset);
  }
  logMessage("\n", MOXLogLevel::Normal).flush();  // sets the dump apart from the next check
  return 0;
}

int MOXTestHarness::checkBlocks(const char* name, const void* actual, const void* expected,
                                std::uint32_t length, bool warn) {
  const MOXOverheadTimer overhead;
  const bool isEqual = isMemoryEqual(actual, expected, length);
  const Verdict& verdict = Verdict::of(isEqual, warn);
  // The odd bracket is part of the log format.
  if (!countVerdict(verdict, warn ? "checkMemoryWarn() called outside test script"
                                  : "checkMemory)() called outside test script")) {
    return 0;
  }
  const VELThreadGuard guard(m_outputLock);
  writeHeadline(verdict, "Check Memory: ", name);
  if (!isEqual) {
    dumpDifferences(actual, expected, length, 0);
    stream().flush();
  }
  return isEqual ? 1 : 0;
}

// Takes no lock: callers that write more than a dump already hold it.
void MOXTestHarness::dumpDifferences(const void* actual, const void* expected, std::uint32_t count,
                                     std::int64_t baseOffset) {
  if (m_logLevel < MOXLogLevel::Normal) {
    return;
  }
  const orvdiff::detail::MOXDump dump{static_cast<const unsigned char*>(actual),
                                      static_cast<const unsigned char*>(expected), count,
                                      baseOffset};
  dump.write(stream(), m_logLevel >= MOXLogLevel::Detailed);
}

bool MOXTestHarness::isMemoryEqual(const void* a, const void* b, std::uint32_t length) {
  return a != nullptr && b != nullptr && std::memcmp(a, b, length) == 0;
}

bool MOXTestHarness::isStringEqual(const char* a, const char* b) {
  return a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
}

#include <future>
#include <sstream>
#include <thread>

#include "HarnessTest.h"
#include "orvdiff/logs/OrvDiffMoxLog.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 25;
const std::string kExpected(64, '.');

/// A log that lets the other threads run after each piece: what no lock keeps together comes apart.
struct YieldingLog : std::stringbuf {
  std::streamsize xsputn(const char* piece, std::streamsize size) override {
    const std::streamsize written = std::stringbuf::xsputn(piece, size);
    std::this_thread::yield();
    return written;
  }
};

/// Leaves the check to its caller.
struct DumpsOnly : OrvDiffMoxLog {
  void logCheck(const char* /*description*/, bool /*passed*/) override {}
  MOXTestHarness* getHarness() override { return MOXTestHarness::getInstance(); }
};

using ThreadTest = HarnessTest;

/// Runs `work` with the numbers of the threads, on all of them at the same time.
template <typename Work>
void onAllThreads(Work work) {
  std::vector<std::future<void>> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.push_back(std::async(std::launch::async, work, thread));
  }
}

std::string blockOf(int thread) {
  return std::string(64, static_cast<char>('a' + thread));
}

void checkOften(int thread) {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  const std::string name = std::to_string(thread);
  const OrvDiffResultFailDiffNormalized difference("m", name, copyOf(kExpected.c_str()),
                                                   copyOf(blockOf(thread).c_str()), 0);
  DumpsOnly listener;
  for (int round = 0; round < kRounds; ++round) {
    harness.check_file(name.c_str(), "file", "file");
    harness.check_file_warn(name.c_str(), "missing", "file");
    harness.checkMemory(name.c_str(), blockOf(thread).data(), kExpected.data(), 64);
    difference.notifyListener(listener);
    harness.lockOutput(true);
    harness.logMessage("note of ", MOXLogLevel::Normal);
    harness.logMessage((name + "\n").c_str(), MOXLogLevel::Normal);
    harness.lockOutput(false);
  }
}

TEST_F(ThreadTest, WhatBelongsTogetherStaysTogether) {
  TestFolder::write("file", "text");
  startTest(MOXLogLevel::Detailed);
  YieldingLog yielding;
  harness().getLogStream().rdbuf(&yielding);
  onAllThreads(checkOften);

  // Whole blocks, each as often as it was written, and nothing else.
  std::string rest = yielding.str();
  for (int thread = 0; thread < kThreads; ++thread) {
    const std::string dump =
        logOf([&] { harness().dumpDifferences(blockOf(thread).data(), kExpected.data(), 64, 0); });
    const std::string name = std::to_string(thread) + "\n";
    for (const std::string& block :
         {"PASSED: Check File: " + name,
          ">>  WARNED: Check File: " + name + "Unable to open actual file\n\n",
          ">>  FAILED: Check Memory: " + name + dump,
          ">>  FAILED: Check File: m and " + name + dump + "\n", "note of " + name}) {
      int count = 0;
      for (auto at = rest.find(block); at != std::string::npos; at = rest.find(block, at)) {
        rest.erase(at, block.size());
        ++count;
      }
      EXPECT_EQ(count, kRounds) << block;
    }
  }
  EXPECT_EQ(rest, "");
}

TEST_F(ThreadTest, CountersAreExact) {
  constexpr std::uint32_t kCounts = 100'000;
  startTest(MOXLogLevel::None);
  MOXTestCase& test = *harness().getCurrentTest();
  onAllThreads([&test](int /*thread*/) {
    for (std::uint32_t count = 0; count < kCounts; ++count) {
      harness().logCheckPass();
      harness().logCheckFail();
      harness().logCheckWarn();
      test.incrementScriptErrors();
      harness().addOwnTime(-1, -1);  // negative, so that the reading is the sum
    }
  });
  constexpr std::uint32_t kAll = kThreads * kCounts;
  const std::uint64_t kReadings[] = {
      test.getChecksPassed(), test.getChecksFailed(),           test.getChecksWarned(),
      test.getScriptErrors(), harness().getTimer(false, false), harness().getTimer(true, false)};
  EXPECT_THAT(kReadings, testing::Each(kAll));
}

}  // namespace

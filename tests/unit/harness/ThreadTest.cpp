#include <thread>

#include "HarnessTest.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 40;
const std::string kExpected(64, '.');

using ThreadTest = HarnessTest;

std::string nameOf(int thread) {
  return "thread " + std::to_string(thread);
}

std::string blockOf(int thread) {
  return std::string(64, static_cast<char>('a' + thread));
}

void checkOften(int thread) {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  const std::string name = nameOf(thread);
  for (int round = 0; round < kRounds; ++round) {
    harness.check_file(name.c_str(), "file", "file");
    harness.check_file_warn(name.c_str(), "missing", "file");
    harness.checkMemory(name.c_str(), blockOf(thread).data(), kExpected.data(), 64);
    harness.logCheckPass();
    harness.lockOutput(true);
    harness.logMessage("note of ", MOXLogLevel::Normal);
    harness.logMessage((name + "\n").c_str(), MOXLogLevel::Normal);
    harness.lockOutput(false);
  }
}

TEST_F(ThreadTest, ChecksStayWholeAndCountersExact) {
  TestFolder::write("file", "text");
  startTest(MOXLogLevel::Detailed);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back(checkOften, thread);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const MOXTestCase& test = *harness().getCurrentTest();
  EXPECT_EQ(test.getChecksPassed(), 2U * kThreads * kRounds);
  EXPECT_EQ(test.getChecksFailed(), 1U * kThreads * kRounds);
  EXPECT_EQ(test.getChecksWarned(), 1U * kThreads * kRounds);
  EXPECT_EQ(test.getScriptErrors(), 0U);

  // Whole blocks, each as often as it was written, and nothing else.
  std::string rest = log();
  for (int thread = 0; thread < kThreads; ++thread) {
    const std::string dump =
        logOf([&] { harness().dumpDifferences(blockOf(thread).data(), kExpected.data(), 64, 0); });
    const std::string name = nameOf(thread) + "\n";
    for (const std::string& block :
         {"PASSED: Check File: " + name,
          ">>  WARNED: Check File: " + name + "Unable to open actual file\n\n",
          ">>  FAILED: Check Memory: " + name + dump, "note of " + name}) {
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

}  // namespace

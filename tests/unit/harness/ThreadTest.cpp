#include <set>
#include <thread>

#include "HarnessTest.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 40;

using ThreadTest = HarnessTest;

void checkOften(int thread) {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  const std::string block(64, static_cast<char>('a' + thread));
  const std::string name = "thread " + std::to_string(thread);
  for (int round = 0; round < kRounds; ++round) {
    harness.check_file(name.c_str(), "file", "file");
    harness.check_file_warn(name.c_str(), "missing", "file");
    harness.checkMemory(name.c_str(), block.data(), std::string(64, '.').data(), 64);
    harness.logCheckPass();
    harness.lockOutput(true);
    harness.logMessage("note of ", MOXLogLevel::Normal);
    harness.logMessage((name + "\n").c_str(), MOXLogLevel::Normal);
    harness.lockOutput(false);
  }
}

/// Everything that the checks of one thread's round can write.
std::set<std::string> blocksOf(int thread) {
  const std::string name = "thread " + std::to_string(thread) + "\n";
  MOXTestHarness::getInstance()->openLogFile("single", false);
  MOXTestHarness::getInstance()->dumpDifferences(
      std::string(64, static_cast<char>('a' + thread)).data(), std::string(64, '.').data(), 64, 0);
  MOXTestHarness::getInstance()->closeLogFile();
  return {"PASSED: Check File: " + name,
          ">>  WARNED: Check File: " + name + "Unable to open actual file\n\n",
          ">>  FAILED: Check Memory: " + name + TestFolder::read("single"), "note of " + name};
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
    for (const std::string& block : blocksOf(thread)) {
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

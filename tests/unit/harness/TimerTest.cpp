#include "HarnessTest.h"

namespace {

using TimerTest = HarnessTest;

TEST_F(TimerTest, OwnTimeIsTakenOffButNeverBelowZero) {
  startTest(MOXLogLevel::Normal);
  const std::clock_t before = std::clock();
  harness().startTimer();
  while (std::clock() < before + CLOCKS_PER_SEC / 20) {
  }
  harness().stopTimer();
  const std::uint64_t all = harness().getTimer(false, true);
  EXPECT_GE(all, 48U);
  harness().addOwnTime(7, 0);
  EXPECT_EQ(harness().getTimer(false, false), all - 7);
  harness().addOwnTime(1'000'000, 1'000'000);
  EXPECT_EQ(harness().getTimer(false, false), 0U);
  EXPECT_EQ(harness().getTimer(true, false), 0U);
  EXPECT_EQ(harness().getTimer(false, true), all) << "can be read again";
}

TEST_F(TimerTest, MemoryIsTheGainBetweenStartAndStop) {
  constexpr std::size_t kGain = std::size_t{16} << 20U;
  startTest(MOXLogLevel::Normal);
  harness().startMemory();
  std::vector<char> kept(kGain, 'x');
  harness().stopMemory();
  const std::uint32_t gain = harness().getMemory();
  EXPECT_GE(gain, kGain * 9 / 10);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // With the allocator's count: to the byte, and back again.
  EXPECT_LT(gain, kGain + 100'000);
  harness().startMemory();
  std::vector<char>().swap(kept);
  harness().stopMemory();
  EXPECT_EQ(harness().getMemory(), 0U);
  harness().startMemory();
  const std::vector<std::string> leaks(20, std::string(100, 'x'));
  harness().stopMemory();
  EXPECT_GE(harness().getMemory(), 1000U);
#endif
}

}  // namespace

#include <unistd.h>

#include <future>

#include "HarnessTest.h"

namespace {

using namespace std::string_literals;
using FileCheckTest = HarnessTest;

TEST_F(FileCheckTest, FindsTheFirstDifference) {
  const std::string block(65536, 'x');  // as long as what is read at a time
  const std::tuple<std::string, std::string, std::string, const char*> kRows[] = {
      {"", "", "", ""},  // equal: no offset, no dump
      {block, block, "", ""},
      {"a\0b"s, "a\0c"s, "Offset: 0X2 (2)", "\n1 bytes compared.  A total of 1 "},
      {block + "a", block + "b", "Offset: 0X10000 (65536)", "\n1 bytes compared.  A total of 1 "},
      {block + "a", block, "", "\n0 bytes compared.  A total of 0 "},
      {"", "abc", "Offset: 0 (0)", "\n3 bytes compared.  A total of 3 "},
      {block, block + "a\0b"s, "Offset: 0X10000 (65536)", "\n3 bytes compared.  A total of 2 "},
      {"a" + block, "b" + block, "Offset: 0 (0)", "\n128 bytes compared.  A total of 1 "},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& [actual, expected, offset, totals] : kRows) {
    TestFolder::write("actual", actual);
    TestFolder::write("expected", expected);
    harness().openLogFile("log", false);
    EXPECT_EQ(harness().check_file("it", "actual", "expected"), actual == expected);
    const std::string verdict = actual == expected ? "PASSED: " : ">>  FAILED: ";
    EXPECT_THAT(log(), StartsWith(verdict + "Check File: it\n" + offset));
    EXPECT_THAT(log(), HasSubstr(totals));
  }
}

TEST_F(FileCheckTest, WhatCannotBeReadNeverPasses) {
  int channel[2];
  ASSERT_EQ(pipe(channel), 0);
  ASSERT_EQ(write(channel[1], "other", 5), 5);
  close(channel[1]);
  const std::string pipeName = "/dev/fd/" + std::to_string(channel[0]);
  TestFolder::write("file", "text");
  TestFolder::write("empty", "");
  const char* const unreadable = "/proc/self/mem";  // opens, but its first page is not mapped
  const char* const kRows[][3] = {
      {nullptr, "file", "Invalid actual file name\n"},
      {"file", nullptr, "Invalid expected file name\n"},
      {"missing", "missing", "Unable to open actual file\n"},
      {"file", "missing", "Unable to open expected file\n"},
      {".", ".", "Unable to open actual file\n"},
      {"empty", ".", "Unable to open expected file\n"},
      {"empty", unreadable, "Unable to read expected file\n"},
      {unreadable, unreadable, "Unable to read actual file\n"},
      {"file", pipeName.c_str(), "Bad seek on expected file!\n"},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& row : kRows) {
    EXPECT_EQ(logOf([&] { EXPECT_EQ(harness().check_file_warn("it", row[0], row[1]), 0); }),
              ">>  WARNED: Check File: it\n"s + row[2] + "\n");
  }
  close(channel[0]);
  EXPECT_EQ(harness().getCurrentTest()->getChecksWarned(), std::size(kRows));
}

TEST_F(FileCheckTest, OffsetsPassTwoGigabytes) {
  startTest(MOXLogLevel::Normal);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "reads 4 GB, which takes minutes when every byte is instrumented";
#endif
  TestFolder::write("expected", "");
  std::filesystem::resize_file("expected", 0x80000010);  // a hole, which takes no room
  std::ofstream("expected", std::ios::app) << "end";
  EXPECT_EQ(harness().check_file("large", "/dev/zero", "expected"), 0);
  EXPECT_THAT(log(), HasSubstr("\nOffset: 0X80000010 (2147483664)\n"));
}

TEST_F(FileCheckTest, AThrowingLogLeavesTheOutputUnlocked) {
  startTest(MOXLogLevel::Normal);
  struct : std::streambuf {
  } takesNothing;
  harness().getLogStream().rdbuf(&takesNothing);
  harness().getLogStream().exceptions(std::ios::badbit);
  EXPECT_THROW(harness().check_file("it", "missing", "missing"), std::ios_base::failure);
  EXPECT_THROW(harness().checkMemory("it", "a", "b", 1), std::ios_base::failure);
  std::async(std::launch::async, [] {
    harness().lockOutput(true);  // would wait for ever
    harness().lockOutput(false);
  }).get();
  EXPECT_THROW(harness().endScript(false), std::ios_base::failure);
  EXPECT_FALSE(MOXTestHarness::isLogComplete());
  EXPECT_EQ(harness().getLogLevel(), MOXLogLevel::None) << "a fresh harness";
}

}  // namespace

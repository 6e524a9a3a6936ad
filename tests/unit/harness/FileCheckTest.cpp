#include <unistd.h>

#include <filesystem>
#include <future>

#include "HarnessTest.h"

namespace {

using FileCheckTest = HarnessTest;

TEST_F(FileCheckTest, FindsTheFirstDifference) {
  const std::string block(65536, 'x');  // as long as what is read at a time
  const struct {
    const char* name;
    std::string actual;
    std::string expected;
    const char* offset;  // null: equal
    const char* totals;
  } kRows[] = {
      {"both empty", "", "", nullptr, ""},
      {"equal, one whole block", block, block, nullptr, ""},
      {"equal, with zeros", std::string("a\0b", 3), std::string("a\0b", 3), nullptr, ""},
      {"byte 0", "Abc", "abc", "Offset: 0 (0)", "3 bytes compared.  A total of 1 bytes"},
      {"last byte", "abC", "abc", "Offset: 0X2 (2)", "1 bytes compared.  A total of 1 bytes"},
      {"behind a zero", std::string("a\0b", 3), std::string("a\0c", 3), "Offset: 0X2 (2)",
       "1 bytes compared.  A total of 1 bytes"},
      {"first byte of the second block", block + "a", block + "b", "Offset: 0X10000 (65536)",
       "1 bytes compared.  A total of 1 bytes"},
      {"expected empty", "abc", "", "", "0 bytes compared.  A total of 0 bytes"},
      {"expected shorter by a block's first byte", block + "a", block, "",
       "0 bytes compared.  A total of 0 bytes"},
      {"actual empty", "", "abc", "Offset: 0 (0)", "3 bytes compared.  A total of 3 bytes"},
      {"actual shorter", block, block + std::string("a\0b", 3), "Offset: 0X10000 (65536)",
       "3 bytes compared.  A total of 2 bytes"},
      {"excerpt is limited", "a" + block, "b" + block, "Offset: 0 (0)",
       "128 bytes compared.  A total of 1 bytes"},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& row : kRows) {
    writeFile("actual", row.actual);
    writeFile("expected", row.expected);
    harness().openLogFile("log", false);
    const bool isEqual = harness().check_file(row.name, "actual", "expected") == 1;
    EXPECT_EQ(isEqual, row.offset == nullptr) << row.name;
    const std::string headline = std::string(isEqual ? "PASSED" : ">>  FAILED") + ": Check File: ";
    EXPECT_EQ(log().rfind(headline + row.name + "\n" + (isEqual ? "" : row.offset), 0), 0U)
        << log();
    EXPECT_NE(log().find(row.totals), std::string::npos) << row.name << log();
  }
}

TEST_F(FileCheckTest, WhatCannotBeReadNeverPasses) {
  int channel[2];
  ASSERT_EQ(pipe(channel), 0);
  ASSERT_EQ(write(channel[1], "other", 5), 5);
  close(channel[1]);
  const std::string pipeName = "/dev/fd/" + std::to_string(channel[0]);
  writeFile("file", "text");
  writeFile("empty", "");
  const char* const unreadable = "/proc/self/mem";  // opens, but its first page is not mapped
  const struct {
    const char* actual;
    const char* expected;
    const char* error;
  } kRows[] = {
      {nullptr, "file", "Invalid actual file name\n"},
      {"file", nullptr, "Invalid expected file name\n"},
      {nullptr, nullptr, "Invalid actual file name\n"},
      {"missing", "file", "Unable to open actual file\n"},
      {"file", "missing", "Unable to open expected file\n"},
      {"missing", "missing", "Unable to open actual file\n"},
      {".", "empty", "Unable to open actual file\n"},
      {"empty", ".", "Unable to open expected file\n"},
      {".", ".", "Unable to open actual file\n"},
      {unreadable, "empty", "Unable to read actual file\n"},
      {"empty", unreadable, "Unable to read expected file\n"},
      {unreadable, unreadable, "Unable to read actual file\n"},
      {"file", pipeName.c_str(), "Bad seek on expected file!\n"},
  };
  startTest(MOXLogLevel::Normal);
  for (const auto& row : kRows) {
    harness().openLogFile("log", false);
    EXPECT_EQ(harness().check_file_warn("it", row.actual, row.expected), 0) << row.error;
    EXPECT_EQ(log(), std::string(">>  WARNED: Check File: it\n") + row.error + "\n");
  }
  close(channel[0]);
  EXPECT_EQ(harness().getCurrentTest()->getChecksWarned(), std::size(kRows));
}

TEST_F(FileCheckTest, OffsetsPassTwoGigabytes) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "reads 4 GB, which takes minutes when every byte is instrumented";
#endif
  writeFile("expected", "");
  std::filesystem::resize_file("expected", 0x80000010);  // a hole, which takes no room
  std::ofstream("expected", std::ios::app) << "end";
  startTest(MOXLogLevel::Normal);
  EXPECT_EQ(harness().check_file("large", "/dev/zero", "expected"), 0);
  EXPECT_NE(log().find("\nOffset: 0X80000010 (2147483664)\n"), std::string::npos) << log();
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
}

}  // namespace

#include <algorithm>
#include <random>
#include <regex>

#include "HarnessTest.h"

namespace {

using DumpTest = HarnessTest;

TEST_F(DumpTest, OffsetsKeepTheirFormAtEveryMagnitude) {
  startTest(MOXLogLevel::Normal);
  const std::pair<std::int64_t, const char*> kRows[] = {
      {0, "Offset: 0 (0)\n"},
      {2147483648, "Offset: 0X80000000 (2147483648)\n"},
      {5000000000, "Offset: 0X12A05F200 (5000000000)\n"},
      {-16, "Offset: 0XFFFFFFF0 (-16)\n"}};
  for (const auto& [offset, line] : kRows) {
    const std::int64_t at = offset;
    EXPECT_THAT(logOf([at] { harness().dumpDifferences("a", "b", 1, at); }),
                testing::StartsWith(line));
  }
}

/// "offset actual expected" of each byte that the dump in `log` marks.
std::vector<std::string> markedBytes(const std::string& log) {
  static const std::regex row(
      "Offset: \\S+ \\((\\d+)\\)\n  actual:(.*)\nexpected:(.*)\n {9}(.*)\n");
  std::vector<std::string> bytes;
  for (std::sregex_iterator match(log.begin(), log.end(), row), end; match != end; ++match) {
    const auto column = [&](int line, std::size_t index) {
      return (*match)[line].str().substr(index * 4, 4);
    };
    for (std::size_t index = 0; index < 16; ++index) {
      if (column(4, index) == "  ^^") {
        bytes.push_back(std::to_string(std::stoul((*match)[1]) + index) + column(2, index) +
                        column(3, index));
      }
    }
  }
  return bytes;
}

/// The same of all bytes that differ, below `limit`.
std::vector<std::string> differingBytes(const std::string& actual, const std::string& expected,
                                        std::size_t limit) {
  std::vector<std::string> bytes;
  for (std::size_t at = 0; at < std::min(actual.size(), limit); ++at) {
    if (actual[at] != expected[at]) {
      char line[64];
      std::snprintf(line, sizeof line, "%zu  %02X  %02X", at, actual[at] & 0xFF,
                    expected[at] & 0xFF);
      bytes.emplace_back(line);
    }
  }
  return bytes;
}

TEST_F(DumpTest, MarksTheBytesThatDiffer) {
  startTest(MOXLogLevel::Detailed);
  std::mt19937 random(4);
  for (int pair = 0; pair < 60; ++pair) {
    std::string expected(1 + random() % 700, '\0');
    std::generate(expected.begin(), expected.end(), [&] { return static_cast<char>(random()); });
    std::string actual = expected;
    for (auto changes = 1 + random() % 40; changes > 0; --changes) {
      actual[random() % actual.size()] = static_cast<char>(random());
    }
    const auto length = static_cast<std::uint32_t>(actual.size());
    EXPECT_EQ(markedBytes(logOf([&] {
                harness().checkMemory("blocks", actual.data(), expected.data(), length);
              })),
              differingBytes(actual, expected, length));
    TestFolder::write("actual", actual);
    TestFolder::write("expected", expected);
    const auto first = std::mismatch(actual.begin(), actual.end(), expected.begin()).first;
    EXPECT_EQ(
        markedBytes(logOf([] { harness().check_file("it", "actual", "expected"); })),
        differingBytes(actual, expected, static_cast<std::size_t>(first - actual.begin()) + 128));
  }
}

}  // namespace

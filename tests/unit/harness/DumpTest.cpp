#include <algorithm>
#include <cstdio>
#include <random>
#include <regex>
#include <vector>

#include "HarnessTest.h"

namespace {

using DumpTest = HarnessTest;

/// "offset actual expected" of each byte that the dump in `log` marks.
std::vector<std::string> markedBytes(const std::string& log) {
  static const std::regex row(
      "Offset: \\S+ \\((\\d+)\\)\n  actual:(.*)\nexpected:(.*)\n {9}(.*)\n");
  std::vector<std::string> bytes;
  for (std::sregex_iterator match(log.begin(), log.end(), row), end; match != end; ++match) {
    for (std::size_t index = 0; index < 16; ++index) {
      if ((*match)[4].str().substr(index * 4, 4) == "  ^^") {
        bytes.push_back(std::to_string(std::stoul((*match)[1]) + index) +
                        (*match)[2].str().substr(index * 4, 4) +
                        (*match)[3].str().substr(index * 4, 4));
      }
    }
  }
  return bytes;
}

TEST_F(DumpTest, MarksExactlyTheBytesThatDiffer) {
  startTest(MOXLogLevel::Detailed);
  std::mt19937 random(4);
  for (int pair = 0; pair < 60; ++pair) {
    std::string expected(1 + random() % 700, '\0');
    std::generate(expected.begin(), expected.end(), [&] { return static_cast<char>(random()); });
    std::string actual = expected;
    for (auto changes = 1 + random() % 40; changes > 0; --changes) {
      actual[random() % actual.size()] = static_cast<char>(random());
    }
    std::vector<std::string> differing;
    for (std::size_t at = 0; at < actual.size(); ++at) {
      if (actual[at] != expected[at]) {
        char line[64];
        std::snprintf(line, sizeof line, "%zu  %02X  %02X", at, actual[at] & 0xFFU,
                      expected[at] & 0xFFU);
        differing.emplace_back(line);
      }
    }
    const auto length = static_cast<std::uint32_t>(actual.size());
    const auto check = [&] { harness().checkMemory("it", actual.data(), expected.data(), length); };
    EXPECT_EQ(markedBytes(logOf(check)), differing);
  }
}

}  // namespace

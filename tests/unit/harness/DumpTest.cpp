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

/// The same from `cmp -l actual expected`.
std::vector<std::string> bytesByCmp() {
  std::vector<std::string> bytes;
  std::FILE* cmp = popen("cmp -l actual expected 2>&1", "r");
  unsigned offset = 0;
  unsigned actual = 0;
  unsigned expected = 0;
  while (std::fscanf(cmp, "%u %o %o", &offset, &actual, &expected) == 3) {
    char line[64];
    std::snprintf(line, sizeof line, "%u  %02X  %02X", offset - 1, actual, expected);
    bytes.emplace_back(line);
  }
  pclose(cmp);
  return bytes;
}

TEST_F(DumpTest, MarksTheBytesThatCmpLists) {
  startTest(MOXLogLevel::Detailed);
  std::mt19937 random(4);
  for (int pair = 0; pair < 60; ++pair) {
    std::string expected(1 + random() % 700, '\0');
    for (char& byte : expected) {
      byte = static_cast<char>(random());
    }
    std::string actual = expected;
    for (auto changes = 1 + random() % 40; changes > 0; --changes) {
      actual[random() % actual.size()] = static_cast<char>(random());
    }
    TestFolder::write("actual", actual);
    TestFolder::write("expected", expected);
    const auto length = static_cast<std::uint32_t>(actual.size());
    const std::string dump =
        logOf([&] { harness().checkMemory("blocks", actual.data(), expected.data(), length); });
    EXPECT_EQ(markedBytes(dump), bytesByCmp());
  }
}

}  // namespace

#include "cli/report/Packed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "cli/terminal/CountBytes.h"

namespace {

TEST(PackedText, ComesBackWhole) {
  PackedText packed;
  EXPECT_TRUE(packed.isEmpty());
  std::string expected;
  for (int number = 0; expected.size() < (std::size_t{11} << 20); ++number) {
    const std::string piece = std::to_string(number) + std::string(number % 5000, 'x') + '\n';
    packed.add(piece);
    expected += piece;
  }
  for (int attempt = 0; attempt < 2; ++attempt) {
    std::string text;
    packed.write([&](std::string_view piece) { text += piece; });
    EXPECT_TRUE(text == expected) << text.size() << " of " << expected.size();
  }
}

TEST(CountBytes, CountsAcrossBlocks) {
  for (const std::size_t length : {0U, 1U, 239U, 240U, 241U, 1000U}) {
    const std::string text = std::string(length, '\n') + "a\nb" + std::string(length, '\n');
    const auto isLineEnd = [](char byte) { return byte == '\n'; };
    EXPECT_EQ(countBytes(text, isLineEnd),
              static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
  }
}

}  // namespace

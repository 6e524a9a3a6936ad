#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "cli/diff/TextTokens.h"

/// The ids of the tokens of two texts: equal tokens have equal ids, counted from 0.
struct TokenIds {
  std::vector<std::uint32_t> a, b;
};

/// Numbers the tokens of two texts. `startsA` and `startsB` are where the tokens start.
TokenIds numberTokens(std::string_view a, const TokenStarts& startsA, std::string_view b,
                      const TokenStarts& startsB);

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// A stretch of one text that a stretch of another replaces, in bytes. One of them may be empty.
struct TextEdit {
  std::size_t beginA, endA;
  std::size_t beginB, endB;
};

/// What turns one text into another.
struct TextEdits {
  std::vector<TextEdit> edits;  ///< in order; between two of them, something is equal
  bool isCoarse = false;        ///< some edits cover more than what differs
};

/// Longer texts cannot be compared.
constexpr std::size_t kLongestComparedText = 0xFFFFFFFE;

/// Compares two texts line by line (long lines block by block), and what differs word by word.
/// Time and memory are bounded by the length of the texts; what that does not leave time for stays
/// coarse. No edit starts or ends within a UTF-8 character.
TextEdits compareTexts(std::string_view a, std::string_view b);

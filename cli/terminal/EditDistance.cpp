#include "cli/terminal/EditDistance.h"

#include <algorithm>
#include <numeric>

std::size_t editDistance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

std::string nearestWord(std::string_view word, const std::vector<std::string>& words) {
  constexpr std::size_t kLongestWord = 100;  // nobody mistypes one, and the work is quadratic
  std::string nearest;
  std::size_t least = std::min(word.size(), kLongestWord) / 3 + 2;
  for (const std::string& candidate : words) {
    const std::size_t distance =
        word.size() <= kLongestWord ? editDistance(word, candidate) : kLongestWord;
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The Levenshtein distance of two words.
std::size_t editDistance(std::string_view one, std::string_view other);

/// The word of `words` that somebody who wrote `word` may have meant; empty if none is close.
std::string nearestWord(std::string_view word, const std::vector<std::string>& words);

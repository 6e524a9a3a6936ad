#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// Texts as tokens. Where a token starts depends on the text around that place only, so that equal
// stretches of two texts have equal tokens, but for a few where the stretch starts. The tokens of a
// text are all of the text. None starts inside a UTF-8 character or between a character and what
// combines with it.
//
// The functions append the offset at which each token starts; a text has to be shorter than 4 GiB.

using TokenStarts = std::vector<std::uint32_t>;

/// How much a stretch of text looks like something of its own: a table row more than a cell.
int blockRank(std::string_view text, std::size_t start);

/// Whether a block of markup, such as a table row, starts here.
inline bool startsBlock(std::string_view text, std::size_t start) {
  return blockRank(text, start) >= 2;
}

/// The start of the character that contains byte `place`, with what combines with it; at most a few
/// bytes before it.
std::size_t wholeCharacterStart(std::string_view text, std::size_t place);

/// Splits into lines, and long lines into blocks. With a `leastLength`, tokens that are shorter are
/// joined with their neighbours, so that there are no more than 2 * length / `leastLength`. Returns
/// false when there would be more than `most` tokens.
bool splitIntoBlocks(std::string_view text, std::size_t leastLength, std::size_t most,
                     TokenStarts& starts);

/// Splits into words and numbers with the blanks behind them, punctuation and line breaks.
void splitIntoWords(std::string_view text, TokenStarts& starts);

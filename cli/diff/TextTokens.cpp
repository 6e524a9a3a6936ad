#include "cli/diff/TextTokens.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::size_t kLongLine = 512;   // longer ones are split into blocks
constexpr std::size_t kShortBlock = 48;  // shorter ones end at block tags and line ends only
constexpr std::size_t kLongBlock = 256;  // longer ones end anywhere
constexpr std::size_t kLongestBlock = 1024;
constexpr std::size_t kLongestWord = 64;

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

bool isLetter(char c) {
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'z';
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// The code point at `place`, which moves behind it; a byte that starts none counts as one that
/// never combines.
UChar32 nextCodePoint(std::string_view text, std::size_t& place) {
  const auto lead = static_cast<unsigned char>(text[place]);
  const std::size_t length = lead < 0xC2 || lead > 0xF4 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const std::string_view bytes = text.substr(place, length);
  if (length == 1 || bytes.size() < length ||
      !std::all_of(bytes.begin() + 1, bytes.end(), isContinuation)) {
    ++place;
    return lead < 0x80 ? lead : 0;
  }
  UChar32 c = lead & (0x7F >> length);
  for (const char byte : bytes.substr(1)) {
    c = (c << 6) | (byte & 0x3F);
  }
  place += length;
  return c;
}

bool combines(UChar32 c) {
  constexpr UChar32 kJoiner = 0x200D;
  return c >= 0x300 && (c == kJoiner || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0);
}

/// Whether the text has a character at `place` that combines with the one before it.
bool combinesAt(std::string_view text, std::size_t place) {
  return place < text.size() && !isAscii(text[place]) && combines(nextCodePoint(text, place));
}

/// The end of what combines with the character that ends at `place`.
std::size_t skipCombining(std::string_view text, std::size_t place) {
  while (combinesAt(text, place)) {
    nextCodePoint(text, place);
  }
  return place;
}

/// Scripts that put no blanks between words: each character is one.
bool isWordOfItsOwn(UChar32 c) {
  return (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
         (c >= 0xF900 && c <= 0xFAFF) || (c >= 0x20000 && c <= 0x3FFFF);
}

/// Spreads the eight bytes before `place`: the same wherever they stand.
std::uint64_t hashBefore(std::string_view text, std::size_t place) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, text.data() + place - sizeof bytes, sizeof bytes);
  return (bytes * 0x9E3779B97F4A7C15U) >> 48U;
}

/// Whether a long line may be split at `place`, `length` bytes into a block.
bool isBlockEnd(std::string_view text, std::size_t place, std::size_t length) {
  const char next = text[place];
  if (next == '<' && startsBlock(text, place)) {
    return true;
  }
  if (length < kShortBlock) {
    return false;
  }
  const char before = text[place - 1];
  if (next == '<' && before == '>') {
    return true;
  }
  const bool endsItem = before == ';' || (before == ',' && !isDigit(next));  // not 1,250.00
  const bool isBetweenWords = (isBlank(before) || endsItem) && !isBlank(next);
  if (isBetweenWords && hashBefore(text, place) % 4 == 0) {
    return true;
  }
  return (length >= kLongBlock && hashBefore(text, place) % 32 == 0) || length >= kLongestBlock;
}

/// Collects starts, joining short tokens where there would be too many.
class BlockStarts {
 public:
  BlockStarts(std::string_view text, std::size_t leastLength, std::size_t most, TokenStarts& starts)
      : m_text(text), m_leastLength(leastLength), m_most(most), m_starts(starts) {}

  /// Returns false when that is one too many.
  bool add(std::size_t start) {
    if (m_leastLength > 0 && !m_starts.empty() && !isFarEnough(start)) {
      return true;
    }
    m_starts.push_back(static_cast<std::uint32_t>(start));
    return m_starts.size() <= m_most;
  }

 private:
  /// Twice the least length is enough; before that, what stands there decides, so that an equal
  /// text further on is soon split alike.
  bool isFarEnough(std::size_t start) const {
    const std::size_t length = start - m_starts.back();
    return length >= 2 * m_leastLength || (length >= std::max<std::size_t>(m_leastLength, 8) &&
                                           hashBefore(m_text, start) % 2 == 0);
  }

  std::string_view m_text;
  std::size_t m_leastLength;
  std::size_t m_most;
  TokenStarts& m_starts;
};

bool splitLine(std::string_view text, std::size_t begin, std::size_t end, BlockStarts& starts) {
  if (end - begin <= kLongLine) {
    return true;
  }
  std::size_t start = begin;
  for (std::size_t place = begin + 1; place < end; ++place) {
    if (!isBlockEnd(text, place, place - start)) {
      continue;
    }
    if (isAscii(text[place]) || wholeCharacterStart(text, place) == place) {
      start = place;
      if (!starts.add(start)) {
        return false;
      }
    }
  }
  return true;
}

/// The end of a number that starts at `place`, such as 1,250.00; a separator needs digits after it.
std::size_t endOfNumber(std::string_view text, std::size_t place) {
  while (place < text.size()) {
    const bool separates = (text[place] == '.' || text[place] == ',') && place + 1 < text.size() &&
                           isDigit(text[place + 1]);
    if (!isDigit(text[place]) && !separates) {
      break;
    }
    ++place;
  }
  return place;
}

std::size_t endOfWord(std::string_view text, std::size_t place) {
  const std::size_t most = std::min(text.size(), place + kLongestWord);
  while (place < most && (isLetter(text[place]) || isDigit(text[place]) || text[place] == '_' ||
                          !isAscii(text[place]))) {
    std::size_t next = place;
    if (isWordOfItsOwn(nextCodePoint(text, next))) {
      break;
    }
    place = next;
  }
  return place;
}

/// The end of the token at `place`, without the blanks behind it.
std::size_t endOfToken(std::string_view text, std::size_t place) {
  std::size_t end = isDigit(text[place]) ? endOfNumber(text, place) : place;
  end = endOfWord(text, end);
  if (end == place) {
    nextCodePoint(text, end);
  }
  return skipCombining(text, end);
}

}  // namespace

int blockRank(std::string_view text, std::size_t start) {
  constexpr std::string_view kRows[] = {"tr", "table", "thead", "tbody", "body", "section"};
  constexpr std::string_view kBlocks[] = {"p",  "li", "div", "ul", "ol", "dl",     "dt",  "dd",
                                          "h1", "h2", "h3",  "h4", "hr", "option", "form"};
  if (start + 1 >= text.size() || text[start] != '<') {
    return 0;
  }
  std::array<char, 8> name = {};
  std::size_t length = 0;
  while (length < name.size() && start + 1 + length < text.size() &&
         (isLetter(text[start + 1 + length]) || isDigit(text[start + 1 + length]))) {
    name[length] = static_cast<char>(text[start + 1 + length] | 0x20);
    ++length;
  }
  const std::string_view tag(name.data(), length);
  if (std::find(std::begin(kRows), std::end(kRows), tag) != std::end(kRows)) {
    return 3;
  }
  if (std::find(std::begin(kBlocks), std::end(kBlocks), tag) != std::end(kBlocks)) {
    return 2;
  }
  return length > 0 ? 1 : 0;
}

std::size_t wholeCharacterStart(std::string_view text, std::size_t place) {
  constexpr std::size_t kFarthest = 64;
  const std::size_t least = place - std::min(place, kFarthest);
  std::size_t start = place;
  while (start > least && start < text.size() &&
         (isContinuation(text[start]) || combinesAt(text, start))) {
    --start;
  }
  return start;
}

bool splitIntoBlocks(std::string_view text, std::size_t leastLength, std::size_t most,
                     TokenStarts& starts) {
  starts.clear();
  BlockStarts blocks(text, leastLength, most, starts);
  for (std::size_t begin = 0; begin < text.size();) {
    const auto* const lineEnd =
        static_cast<const char*>(std::memchr(text.data() + begin, '\n', text.size() - begin));
    const std::size_t end =
        lineEnd == nullptr ? text.size() : static_cast<std::size_t>(lineEnd - text.data()) + 1;
    if (!blocks.add(begin) || !splitLine(text, begin, end, blocks)) {
      return false;
    }
    begin = end;
  }
  return true;
}

void splitIntoWords(std::string_view text, TokenStarts& starts) {
  starts.clear();
  for (std::size_t place = 0; place < text.size();) {
    starts.push_back(static_cast<std::uint32_t>(place));
    const bool isLineBreak = text[place] == '\n';
    place = endOfToken(text, place);
    while (!isLineBreak && place < text.size() && isBlank(text[place])) {
      ++place;
    }
    place = skipCombining(text, place);
  }
}

#include "cli/terminal/Excerpt.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "cli/terminal/CountBytes.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kColumnsBefore = 30;
constexpr std::size_t kColumnsAfter = 46;
constexpr std::size_t kLongestCharacter = 4;
constexpr const char* kCut = "\u2026";

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The length in bytes of a character that starts with `lead`; 1 if no character can.
std::size_t lengthAfterLead(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  if (byte < 0xC2 || byte > 0xF4) {
    return 1;
  }
  return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
}

std::size_t startOfLine(const char* text, std::size_t position) {
  const std::size_t lineEnd = std::string_view(text, position).rfind('\n');
  return lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
}

/// The start of an excerpt that shows at most `kColumnsBefore` characters before `position`.
std::size_t startOfExcerpt(const char* text, std::size_t position) {
  std::size_t start = position;
  for (std::size_t shown = 0; start > 0 && shown < kColumnsBefore && text[start - 1] != '\n';
       ++shown) {
    start = startOfCharacter(text, start - 1);
  }
  return start;
}

/// As much of `text` as an excerpt can show, without cutting a character.
std::string_view visiblePart(const char* text) {
  constexpr std::size_t kMost = kLongestCharacter * (kColumnsAfter + 1);
  const std::size_t length = strnlen(text, kMost);
  return {text, length == kMost ? startOfCharacter(text, length) : length};
}

void showBefore(const char* text, std::size_t position, Excerpt& excerpt) {
  const std::size_t start = startOfExcerpt(text, position);
  if (start != startOfLine(text, position)) {
    excerpt.before = kCut;
    excerpt.columns = 1;
  }
  for (std::string_view rest(text + start, position - start); !rest.empty();) {
    const PrintableCharacter character = firstPrintable(rest);
    excerpt.before += character.shown;
    excerpt.columns += character.columns;
    rest.remove_prefix(character.length);
  }
}

/// Shows as much of the line as fits.
void showRest(std::string_view text, Excerpt& excerpt) {
  std::size_t columns = 0;
  for (bool lineEnded = false; !text.empty() && !lineEnded;) {
    const PrintableCharacter character = firstPrintable(text);
    columns += character.columns;
    if (columns > kColumnsAfter) {
      excerpt.rest += kCut;
      return;
    }
    lineEnded = text.front() == '\n';
    excerpt.rest += character.shown;
    text.remove_prefix(character.length);
  }
}

}  // namespace

std::size_t startOfCharacter(const char* text, std::size_t position) {
  for (std::size_t back = 1; back < kLongestCharacter && back <= position; ++back) {
    const std::size_t start = position - back;
    if (!isContinuation(text[start])) {
      return start + lengthAfterLead(text[start]) > position ? start : position;
    }
  }
  return position;
}

TextPosition locate(const char* text, std::size_t position) {
  const std::size_t lineStart = startOfLine(text, position);
  const std::size_t lines = countBytes({text, lineStart}, [](char byte) { return byte == '\n'; });
  const std::size_t characters = countBytes({text + lineStart, position - lineStart},
                                            [](char byte) { return !isContinuation(byte); });
  return {lines + 1, characters + 1};
}

Excerpt excerptAround(const char* text, std::size_t position) {
  Excerpt excerpt = {};
  showBefore(text, position, excerpt);
  std::string_view rest = visiblePart(text + position);
  if (rest.empty()) {
    excerpt.first = "[end of text]";
    return excerpt;
  }
  const PrintableCharacter first = firstPrintable(rest);
  excerpt.first = first.shown;
  if (rest.front() != '\n') {
    showRest(rest.substr(first.length), excerpt);
  }
  return excerpt;
}

std::string shortened(std::string_view text, std::size_t columns) {
  const std::size_t tailColumns = columns / 3;
  std::string head;
  std::size_t shown = 0;
  std::size_t position = 0;
  while (position < text.size() && shown < columns - tailColumns) {
    const PrintableCharacter character = firstPrintable(text.substr(position));
    head += character.shown;
    shown += character.columns;
    position += character.length;
  }
  if (text.size() - position <= tailColumns) {
    return head + printable(text.substr(position));
  }
  return head + kCut +
         printable(text.substr(startOfCharacter(text.data(), text.size() - tailColumns)));
}

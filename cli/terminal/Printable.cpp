#include "cli/terminal/Printable.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <iterator>

namespace {

/// Characters without a glyph that change how others look: joiners, direction marks, byte-order
/// marks, tags.
bool isInvisible(wchar_t c) {
  constexpr struct {
    wchar_t first, last;
  } kRanges[] = {{0xAD, 0xAD},     {0x61C, 0x61C},   {0x200B, 0x200F}, {0x2028, 0x202E},
                 {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};
  return std::any_of(std::begin(kRanges), std::end(kRanges),
                     [c](const auto& range) { return c >= range.first && c <= range.last; });
}

std::string numbered(const char* format, unsigned long number) {
  char text[24];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

std::string escaped(wchar_t c) {
  switch (c) {
    case L'\n':
      return "\\n";
    case L'\r':
      return "\\r";
    case L'\t':
      return "\\t";
    case L'\\':
      return "\\\\";
    default:
      return numbered(c < 0x80 ? "\\x%02lX" : "\\u{%04lX}", static_cast<unsigned long>(c));
  }
}

PrintableCharacter asEscape(std::size_t length, std::string escape) {
  const std::size_t columns = escape.size();
  return {length, std::move(escape), columns};
}

struct Glyph {
  std::size_t length;  ///< in bytes
  std::size_t columns;
};

/// The first character, or a sequence that changes colours.
Glyph firstGlyph(std::string_view text) {
  if (text.front() == '\033') {
    return {std::min(text.find('m'), text.size() - 1) + 1, 0};
  }
  wchar_t c = 0;
  std::mbstate_t state = {};
  const std::size_t length = std::mbrtowc(&c, text.data(), text.size(), &state);
  const bool isValid = length > 0 && length <= text.size();
  return isValid ? Glyph{length, static_cast<std::size_t>(std::max(0, wcwidth(c)))} : Glyph{1, 1};
}

}  // namespace

PrintableCharacter firstPrintable(std::string_view text) {
  wchar_t c = 0;
  std::mbstate_t state = {};
  const std::size_t length = std::mbrtowc(&c, text.data(), text.size(), &state);
  if (length == 0) {
    return asEscape(1, escaped(L'\0'));
  }
  if (length > text.size()) {  // invalid or incomplete
    return asEscape(1, numbered("\\x%02lX", static_cast<unsigned char>(text.front())));
  }
  const int columns = wcwidth(c);
  if (c == L'\\' || columns < 0 || std::iswprint(static_cast<std::wint_t>(c)) == 0 ||
      isInvisible(c)) {
    return asEscape(length, escaped(c));
  }
  return {length, std::string(text.substr(0, length)), static_cast<std::size_t>(columns)};
}

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const PrintableCharacter character = firstPrintable(text);
    result += character.shown;
    text.remove_prefix(character.length);
  }
  return result;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> rows;
  std::size_t begin = 0;
  std::size_t blank = 0;  // the last one of the row, if it has one
  std::size_t used = 0;
  for (std::size_t i = 0; i < text.size();) {
    const Glyph glyph = firstGlyph(text.substr(i));
    if (used + glyph.columns > columns && i > begin) {
      const std::size_t end = blank > begin ? blank : i;
      rows.emplace_back(text.substr(begin, end - begin));
      begin = end + (blank > begin ? 1 : 0);
      i = begin;
      used = 0;
      continue;
    }
    blank = text[i] == ' ' ? i : blank;
    used += glyph.columns;
    i += glyph.length;
  }
  rows.emplace_back(text.substr(begin));
  return rows;
}

std::string clipped(const std::string& text, std::size_t columns) {
  std::size_t used = 0;
  std::size_t end = 0;  // of what leaves room for the sign
  for (std::size_t i = 0; i < text.size();) {
    const Glyph glyph = firstGlyph(std::string_view(text).substr(i));
    used += glyph.columns;
    if (used > columns) {
      return text.substr(0, end) + (text.find('\033') == std::string::npos ? "" : "\033[m") +
             "\u2026";
    }
    i += glyph.length;
    end = used < columns ? i : end;
  }
  return text;
}

std::string countOf(std::size_t count, std::string_view noun) {
  std::string text = std::to_string(count) + ' ';
  return text.append(noun).append(count == 1 ? "" : "s");
}

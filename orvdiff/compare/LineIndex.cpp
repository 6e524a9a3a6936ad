#include "orvdiff/compare/LineIndex.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "orvdiff/compare/pattern/TextCharacters.h"

namespace orvdiff {
namespace {

constexpr std::size_t kMarkDistance = 4096;

/// Where the character after the one at `position` starts.
std::size_t nextCharacter(std::string_view text, std::size_t position) {
  if (pattern::isAscii(text[position])) {
    return position + 1;
  }
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t start = position;
  UChar32 character = 0;
  U8_NEXT(bytes, position, text.size(), character);
  return character >= 0 ? position : start + 1;
}

}  // namespace

LineIndex::LineIndex(std::string_view text) : m_text(text), m_lineStarts{0} {
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); i = nextCharacter(text, i)) {
    if (i >= m_marks.size() * kMarkDistance) {
      m_marks.push_back({i, characters});
    }
    if (text[i] == '\n') {
      m_lineStarts.push_back(i + 1);
    }
    ++characters;
  }
}

std::size_t LineIndex::lineOf(std::size_t offset) const {
  const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
  return static_cast<std::size_t>(next - m_lineStarts.begin()) - 1;
}

std::size_t LineIndex::columnOf(std::size_t offset) const {
  return charactersBefore(offset) - charactersBefore(m_lineStarts[lineOf(offset)]);
}

std::size_t LineIndex::charactersBefore(std::size_t offset) const {
  const auto next =
      std::upper_bound(m_marks.begin(), m_marks.end(), offset,
                       [](std::size_t at, const Mark& mark) { return at < mark.offset; });
  if (next == m_marks.begin()) {
    return 0;
  }
  Mark mark = *std::prev(next);
  while (mark.offset < offset) {
    mark.offset = nextCharacter(m_text, mark.offset);
    mark.characters += mark.offset <= offset ? 1 : 0;
  }
  return mark.characters;
}

}  // namespace orvdiff

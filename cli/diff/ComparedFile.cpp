#include "cli/diff/ComparedFile.h"

#include <algorithm>

#include "cli/diff/TextTokens.h"
#include "cli/terminal/CountBytes.h"

namespace {

// In bytes, masks aside: as far as one looks for the end of a line before cutting it.
constexpr std::size_t kReach = 200;
constexpr std::size_t kLeastBetweenWords = 60;
constexpr std::size_t kPiece = 100;
constexpr std::size_t kMaskWidth = 16;  // about what a mask takes on a screen
constexpr std::size_t kBlockOfLines = 4096;
constexpr std::size_t kNowhere = std::string_view::npos;

}  // namespace

ComparedFile::ComparedFile(std::string_view bytes, const OrvPatternList* patterns)
    : m_original(bytes), m_text(bytes) {
  if (patterns != nullptr) {
    m_map = std::make_unique<const OrvOriginMap>(bytes, *patterns);
    m_original = m_map->original();
    m_text = m_map->text();
  }
}

const std::vector<ComparedFile::Mask>& ComparedFile::masks() const {
  static const std::vector<Mask> kNone;
  return m_map != nullptr ? m_map->masks() : kNone;
}

std::size_t ComparedFile::placeOf(std::size_t offset) const {
  return m_map != nullptr ? m_map->originOf(offset).begin : offset;
}

std::size_t ComparedFile::endPlaceOf(std::size_t offset) const {
  return m_map == nullptr || offset == 0 ? offset : m_map->originOf(offset - 1).end;
}

std::size_t ComparedFile::offsetOf(std::size_t place) const {
  const auto after = std::partition_point(masks().begin(), masks().end(),
                                          [place](const Mask& mask) { return mask.begin < place; });
  if (after == masks().begin()) {
    return place;
  }
  const Mask& mask = *(after - 1);
  return place < mask.end ? mask.textBegin : mask.textEnd + (place - mask.end);
}

std::vector<ComparedFile::Mask>::const_iterator ComparedFile::maskAfter(std::size_t place) const {
  return std::partition_point(masks().begin(), masks().end(),
                              [place](const Mask& mask) { return mask.end <= place; });
}

/// Whether what the mask hides ends with a line break, blanks aside.
bool ComparedFile::endsLine(const Mask& mask) const {
  const std::string_view masked = maskedText(mask);
  const std::size_t last = masked.find_last_not_of(" \t\r");
  return last != kNowhere && masked[last] == '\n';
}

bool ComparedFile::isCutBetweenWords(std::size_t place) const {
  const char before = m_original[place - 1];
  return (before == ' ' || before == '>' || before == ',') &&
         wholeCharacterStart(m_original, place) == place;
}

bool ComparedFile::startsLine(std::size_t place) const {
  if (place == 0) {
    return true;
  }
  auto mask = maskAfter(place);  // those that end here are before it
  while (mask != masks().begin() && (mask - 1)->end == place) {
    --mask;
    if (mask->begin < place) {
      return endsLine(*mask);
    }
  }
  return m_original[place - 1] == '\n';
}

std::size_t ComparedFile::lineStart(std::size_t place, bool mayStay) const {
  std::size_t tag = kNowhere;
  std::size_t betweenWords = kNowhere;
  std::size_t passed = 0;
  auto mask = maskAfter(place);
  const std::size_t start = place;
  while (place > 0) {
    const bool mayEnd = mayStay || place < start;
    if (mask != masks().begin() && (mask - 1)->end == place) {
      --mask;
      if (mayEnd && mask->begin < place && endsLine(*mask)) {
        return place;
      }
      passed += mask->begin < place ? kMaskWidth : 0;
      place = mask->begin;
      continue;
    }
    if (mayEnd && m_original[place - 1] == '\n') {
      return place;
    }
    if (mayEnd && tag == kNowhere && startsBlock(m_original, place)) {
      tag = place;
    }
    if (betweenWords == kNowhere && passed >= kLeastBetweenWords && isCutBetweenWords(place)) {
      betweenWords = place;
    }
    if (passed >= kReach) {
      return tag != kNowhere            ? tag
             : betweenWords != kNowhere ? betweenWords
                                        : wholeCharacterStart(m_original, place);
    }
    --place;
    ++passed;
  }
  return 0;
}

std::size_t ComparedFile::lineEnd(std::size_t place, bool mayStay) const {
  return mayStay && startsLine(place) ? place : findLineEnd(place, mayStay, Cut::Nearest);
}

std::size_t ComparedFile::pieceEnd(std::size_t place) const {
  return findLineEnd(place, false, Cut::AfterPiece);
}

std::size_t ComparedFile::findLineEnd(std::size_t place, bool mayStay, Cut where) const {
  std::size_t tag = kNowhere;
  std::size_t betweenWords = kNowhere;
  std::size_t passed = 0;
  auto mask = maskAfter(place);
  const std::size_t start = place;
  while (place < m_original.size()) {
    if (mask != masks().end() && mask->begin <= place) {
      passed += mask->begin < mask->end ? kMaskWidth : 0;
      place = mask->end;
      if (endsLine(*mask++)) {
        return place;
      }
      continue;
    }
    if (m_original[place] == '\n') {
      return place + 1;
    }
    const auto isWanted = [&](std::size_t cut) {
      return where == Cut::Nearest ? cut == kNowhere : passed <= kPiece;
    };
    if ((mayStay || place > start) && isWanted(tag) && startsBlock(m_original, place)) {
      tag = place;
    }
    if (isWanted(betweenWords) && passed >= kLeastBetweenWords && isCutBetweenWords(place)) {
      betweenWords = place;
    }
    if (passed >= kReach) {
      const std::size_t cut = wholeCharacterStart(m_original, place);
      return tag != kNowhere ? tag : betweenWords != kNowhere ? betweenWords : cut;
    }
    ++place;
    ++passed;
  }
  return m_original.size();
}

std::uint64_t ComparedFile::lineNumber(std::size_t place) const {
  const auto countLines = [this](std::size_t begin, std::size_t end) {
    return std::uint64_t{
        countBytes(m_original.substr(begin, end - begin), [](char byte) { return byte == '\n'; })};
  };
  if (m_linesBefore.empty()) {
    m_linesBefore.push_back(0);
    for (std::size_t begin = 0; begin + kBlockOfLines <= m_original.size();
         begin += kBlockOfLines) {
      m_linesBefore.push_back(m_linesBefore.back() + countLines(begin, begin + kBlockOfLines));
    }
  }
  const std::size_t block = place / kBlockOfLines;
  return 1 + m_linesBefore[block] + countLines(block * kBlockOfLines, place);
}

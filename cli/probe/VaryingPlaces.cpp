#include "cli/probe/VaryingPlaces.h"

#include <algorithm>
#include <optional>
#include <string>

#include "cli/diff/TextEdits.h"

namespace {

constexpr std::size_t kMargin = 64;         // bytes around an edit in which a value is looked for
constexpr std::size_t kLongestGrown = 512;  // longer edits are no values
constexpr std::size_t kLongestTag = 2048;

struct Span {
  std::size_t begin, end;
};

bool isWordByte(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

Span grownToWord(std::string_view text, Span span) {
  const auto joins = [text](std::size_t place) {
    return place > 0 && place < text.size() && isWordByte(text[place - 1]) &&
           isWordByte(text[place]);
  };
  const std::size_t least = span.begin - std::min(span.begin, kMargin);
  const std::size_t most = std::min(text.size(), span.end + kMargin);
  while (span.begin > least && joins(span.begin)) {
    --span.begin;
  }
  while (span.end < most && joins(span.end)) {
    ++span.end;
  }
  return span;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\n") == std::string_view::npos;
}

/// All blanks in a row.
Span grownToBlanks(std::string_view text, Span span) {
  while (span.begin > 0 && isBlank(text.substr(span.begin - 1, 1))) {
    --span.begin;
  }
  while (span.end < text.size() && isBlank(text.substr(span.end, 1))) {
    ++span.end;
  }
  return span;
}

/// The words and values that the bytes of `edit` are part of. An insertion also belongs to a value
/// that it is only next to.
Span grown(std::string_view text, Span edit) {
  Span span = grownToWord(text, edit);
  const std::size_t from = span.begin - std::min(span.begin, kMargin);
  for (const FoundValue& value :
       findValues(text.substr(from, std::min(text.size(), span.end + kMargin) - from))) {
    const std::size_t begin = from + value.begin;
    const std::size_t end = from + value.end;
    const bool isPart = edit.begin < edit.end ? begin < edit.end && end > edit.begin
                                              : begin <= edit.begin && end >= edit.begin;
    if (isPart) {
      span.begin = std::min(span.begin, begin);
      span.end = std::max(span.end, end);
    }
  }
  return span;
}

/// The tag around `span`, if it is all inside one.
std::optional<Span> tagAround(std::string_view text, Span span) {
  if (!isInsideTag(text, span.begin)) {
    return std::nullopt;
  }
  const std::size_t begin = text.rfind('<', span.begin - 1);
  const std::size_t end = text.find('>', begin);
  const bool holds = end != std::string_view::npos && end >= span.end && end - begin < kLongestTag;
  return holds ? std::optional<Span>({begin, end + 1}) : std::nullopt;
}

/// The attributes of a tag, each with its value.
std::vector<std::string> attributesOf(std::string_view tag) {
  std::vector<std::string> attributes;
  std::string current;
  char quote = '\0';
  for (const char c : tag) {
    if (quote == '\0' && (c == ' ' || c == '\t' || c == '\n' || c == '>' || c == '/')) {
      if (!current.empty()) {
        attributes.push_back(std::move(current));
      }
      current.clear();
      continue;
    }
    current += c;
    if (c == '"' || c == '\'') {
      quote = quote == c ? '\0' : quote == '\0' ? c : quote;
    }
  }
  return attributes;
}

std::string_view cut(std::string_view text, Span span) {
  return text.substr(span.begin, span.end - span.begin);
}

class PlaceFinder {
 public:
  PlaceFinder(std::string_view a, std::string_view b) : m_a(a), m_b(b) {}

  std::vector<VaryingPlace> find() {
    for (const TextEdit& edit : compareTexts(m_a, m_b).edits) {
      add({edit.beginA, edit.endA, edit.beginB, edit.endB, ValueKind::Words});
    }
    std::vector<VaryingPlace> places;
    for (const VaryingPlace& place : m_places) {
      split(place, places);
    }
    for (VaryingPlace& place : places) {
      if (place.kind != ValueKind::AttributeOrder) {
        place.kind =
            kindOf({std::string(cut(m_a, spanA(place))), std::string(cut(m_b, spanB(place)))});
      }
    }
    return places;
  }

 private:
  static Span spanA(const VaryingPlace& place) { return {place.beginA, place.endA}; }
  static Span spanB(const VaryingPlace& place) { return {place.beginB, place.endB}; }

  /// Adds a place. One that grows into the place before it, or the other way round, becomes one
  /// with it. It ends where the later one does: the earlier one grew over an edit it did not see.
  void add(VaryingPlace place) {
    if (!m_places.empty() && m_places.back().kind == ValueKind::AttributeOrder &&
        place.beginA < m_places.back().endA) {
      return;
    }
    grow(place);
    if (!m_places.empty() && joins(m_places.back(), place)) {
      const VaryingPlace former = m_places.back();
      m_places.pop_back();
      place.beginA = former.beginA;
      place.beginB = former.beginB;
      place.kind = ValueKind::Words;
    }
    m_places.push_back(place);
  }

  /// What stands around a place is equal in both texts, so both sides grow by as much.
  void grow(VaryingPlace& place) const {
    if (growToTag(place) ||
        std::max(place.endA - place.beginA, place.endB - place.beginB) > kLongestGrown) {
      return;
    }
    const bool areBlanks = isBlank(cut(m_a, spanA(place))) && isBlank(cut(m_b, spanB(place)));
    const auto grow = areBlanks ? grownToBlanks : grown;
    const Span a = grow(m_a, spanA(place));
    const Span b = grow(m_b, spanB(place));
    const std::size_t before = std::min(
        {std::max(place.beginA - a.begin, place.beginB - b.begin), place.beginA, place.beginB});
    const std::size_t after = std::min({std::max(a.end - place.endA, b.end - place.endB),
                                        m_a.size() - place.endA, m_b.size() - place.endB});
    place.beginA -= before;
    place.beginB -= before;
    place.endA += after;
    place.endB += after;
  }

  bool growToTag(VaryingPlace& place) const {
    const auto a = tagAround(m_a, spanA(place));
    const auto b = tagAround(m_b, spanB(place));
    if (!a || !b) {
      return false;
    }
    const std::vector<std::string> inA = attributesOf(cut(m_a, *a));
    const std::vector<std::string> inB = attributesOf(cut(m_b, *b));
    if (inA == inB || !std::is_permutation(inA.begin(), inA.end(), inB.begin(), inB.end())) {
      return false;
    }
    place = {a->begin, a->end, b->begin, b->end, ValueKind::AttributeOrder};
    return true;
  }

  /// Appends a place to `places`: the values in it one by one, if all that stands between them is
  /// equal. Edits close to each other come as one.
  void split(const VaryingPlace& place, std::vector<VaryingPlace>& places) const {
    const std::string_view textA = cut(m_a, spanA(place));
    const std::string_view textB = cut(m_b, spanB(place));
    const std::vector<FoundValue> a = findValues(textA);
    const std::vector<FoundValue> b = findValues(textB);
    if (place.kind == ValueKind::AttributeOrder || a.size() < 2 ||
        !haveEqualGaps(textA, a, textB, b)) {
      places.push_back(place);
      return;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
      const VaryingPlace value = {place.beginA + a[i].begin, place.beginA + a[i].end,
                                  place.beginB + b[i].begin, place.beginB + b[i].end, a[i].kind};
      const bool isPart = !places.empty() && places.back().beginA >= place.beginA;
      if (isPart && joins(places.back(), value)) {
        places.back().endA = value.endA;
        places.back().endB = value.endB;
      } else if (cut(m_a, spanA(value)) != cut(m_b, spanB(value))) {
        places.push_back(value);
      }
    }
  }

  /// Whether two texts have as many values and the same text around them.
  static bool haveEqualGaps(std::string_view textA, const std::vector<FoundValue>& a,
                            std::string_view textB, const std::vector<FoundValue>& b) {
    std::size_t endA = 0;
    std::size_t endB = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
      if (textA.substr(endA, a[i].begin - endA) != textB.substr(endB, b[i].begin - endB)) {
        return false;
      }
      endA = a[i].end;
      endB = b[i].end;
    }
    return a.size() == b.size() && textA.substr(endA) == textB.substr(endB);
  }

  /// Whether too little is between two places to tell them apart: "17&b=93".
  bool joins(const VaryingPlace& former, const VaryingPlace& place) const {
    constexpr std::size_t kShortGap = 3;
    if (place.beginA <= former.endA || place.beginB <= former.endB) {
      return true;
    }
    const std::string_view gap = m_a.substr(former.endA, place.beginA - former.endA);
    return gap.size() <= kShortGap && gap.find_first_of("<>\n ,;\"'") == std::string_view::npos;
  }

  std::string_view m_a, m_b;
  std::vector<VaryingPlace> m_places;
};

}  // namespace

bool isInsideTag(std::string_view text, std::size_t place) {
  const std::size_t from = place - std::min(place, kLongestTag);
  const std::size_t bracket = text.substr(from, place - from).find_last_of("<>");
  if (bracket == std::string_view::npos || text[from + bracket] == '>') {
    return false;
  }
  const char next = from + bracket + 1 < text.size() ? text[from + bracket + 1] : ' ';
  return next == '/' || next == '!' || isWordByte(next);
}

std::vector<VaryingPlace> findVaryingPlaces(std::string_view a, std::string_view b) {
  return PlaceFinder(a, b).find();
}

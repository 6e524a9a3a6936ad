#include "cli/probe/PlantedChanges.h"

#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t kWanted = 200;
constexpr std::size_t kNear = 200;                      // bytes from a place that varies
constexpr std::size_t kWindow = std::size_t{64} << 10;  // of a text that the patterns see
constexpr unsigned kSeed = 20260101;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Another digit for a digit, another letter of the same case for a letter.
char changed(char c) {
  const char last = isDigit(c) ? '9' : c >= 'a' ? 'z' : 'Z';
  const char first = isDigit(c) ? '0' : c >= 'a' ? 'a' : 'A';
  return c == last ? first : static_cast<char>(c + 1);
}

class Planter {
 public:
  Planter(const OrvPatternList& patterns, const PlacesByFile& places, RunTexts& texts,
          ProposalCheck& check)
      : m_patterns(patterns), m_places(places), m_texts(texts), m_check(check) {
    for (std::size_t file = 0; file < places.size(); ++file) {
      if (!places[file].empty()) {
        m_varying.push_back(file);
      }
    }
  }

  void plant() {
    constexpr std::size_t kMostTries = 10 * kWanted;
    for (std::size_t i = 0; i < kMostTries && m_check.planted < kWanted; ++i) {
      const bool isNear = i % 2 == 0 && !m_varying.empty();
      const std::size_t file =
          isNear ? m_varying[random(m_varying.size())] : random(m_texts.fileCount());
      const RunTexts::Text text = m_texts.of(file).front();
      const auto place = target(*text, file, isNear, i % 4 < 2);
      if (place && m_planted.insert({file, *place}).second) {
        ++m_check.planted;
        tryAt(*text, file, *place);
      }
    }
  }

 private:
  /// Not a distribution of the standard library: those differ between implementations.
  std::size_t random(std::size_t count) { return count == 0 ? 0 : m_random() % count; }

  /// A byte of a number, or of a word of at least three letters, outside tags and away from what
  /// varies.
  std::optional<std::size_t> target(const std::string& text, std::size_t file, bool isNear,
                                    bool isNumber) {
    std::size_t place = random(text.size());
    if (isNear) {
      const VaryingPlace& around = m_places[file][random(m_places[file].size())];
      place = around.beginA - std::min(around.beginA, kNear) + random(2 * kNear);
    }
    const std::size_t end = std::min(text.size(), place + kNear);
    for (; place < end; ++place) {
      const bool fits = isNumber ? isDigit(text[place]) : isWord(text, place);
      if (fits && isVisible(text, place) && !varies(file, place)) {
        return place;
      }
    }
    return std::nullopt;
  }

  static bool isWord(const std::string& text, std::size_t place) {
    return place + 2 < text.size() && isLetter(text[place]) && isLetter(text[place + 1]) &&
           isLetter(text[place + 2]);
  }

  /// Neither in a tag nor in an entity such as "&#160;".
  static bool isVisible(const std::string& text, std::size_t place) {
    constexpr std::size_t kLongestEntity = 10;
    const std::size_t from = place - std::min(place, kLongestEntity);
    const std::string_view before = std::string_view(text).substr(from, place - from);
    const std::size_t opened = before.find_last_of("&;");
    const bool isEntity = opened != std::string_view::npos && before[opened] == '&';
    return !isEntity && !isInsideTag(text, place);
  }

  bool varies(std::size_t file, std::size_t place) const {
    return std::any_of(m_places[file].begin(), m_places[file].end(),
                       [place](const VaryingPlace& varying) {
                         return place >= varying.beginA && place < varying.endA;
                       });
  }

  /// The proposals' matches are short, so a window of a long text shows what all of it would.
  void tryAt(const std::string& text, std::size_t file, std::size_t place) {
    const std::size_t begin = place - std::min(place, kWindow);
    const std::string before = text.substr(begin, place - begin + kWindow);
    std::string after = before;
    after[place - begin] = changed(before[place - begin]);
    if (normalized(before, m_patterns) == normalized(after, m_patterns)) {
      constexpr std::size_t kContext = 30;
      const std::size_t from = place - std::min(place, kContext);
      m_check.missed.push_back({m_texts.folders().files[file], std::string(1, text[place]),
                                std::string(1, changed(text[place])),
                                text.substr(from, 2 * kContext)});
    }
  }

  const OrvPatternList& m_patterns;
  const PlacesByFile& m_places;
  RunTexts& m_texts;
  ProposalCheck& m_check;
  std::mt19937 m_random{kSeed};
  std::vector<std::size_t> m_varying;  ///< files in which something varies
  std::set<std::pair<std::size_t, std::size_t>> m_planted;
};

}  // namespace

void plantChanges(const OrvPatternList& patterns, const PlacesByFile& places, RunTexts& texts,
                  ProposalCheck& check) {
  if (texts.fileCount() > 0) {
    Planter(patterns, places, texts, check).plant();
  }
}

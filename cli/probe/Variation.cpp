#include "cli/probe/Variation.h"

#include <algorithm>
#include <unordered_map>

namespace {

constexpr std::size_t kContext = 120;
constexpr std::size_t kLongestValue = 2048;

/// Counts equal variations as one: a footer is on every page.
class Collector {
 public:
  explicit Collector(RunTexts& texts) : m_texts(texts) {}

  Variations collect() {
    m_found.places.resize(m_texts.fileCount());
    for (std::size_t file = 0; file < m_texts.fileCount(); ++file) {
      const std::vector<RunTexts::Text> texts = m_texts.of(file);
      bool differs = false;
      for (std::size_t run = 1; run < texts.size(); ++run) {
        if (texts[run] != texts[0]) {
          differs = true;
          compare(file, run, *texts[0], *texts[run]);
        }
      }
      m_found.differingFiles += differs ? 1 : 0;
      sortPlaces(m_found.places[file]);
    }
    return std::move(m_found);
  }

 private:
  void compare(std::size_t file, std::size_t run, std::string_view a, std::string_view b) {
    const std::vector<VaryingPlace> places = findVaryingPlaces(a, b);
    for (std::size_t i = 0; i < places.size(); ++i) {
      const VaryingPlace& place = places[i];
      Variation variation;
      variation.before = textBefore(a, place.beginA, i > 0 ? places[i - 1].endA : 0);
      variation.after =
          textAfter(a, place.endA, i + 1 < places.size() ? places[i + 1].beginA : a.size());
      variation.valueA = a.substr(place.beginA, std::min(place.endA - place.beginA, kLongestValue));
      variation.valueB = b.substr(place.beginB, std::min(place.endB - place.beginB, kLongestValue));
      variation.run = run;
      variation.kind = place.kind;
      variation.isInsideTag = isInsideTag(a, place.beginA);
      count(std::move(variation), static_cast<std::uint32_t>(file));
    }
    std::vector<VaryingPlace>& all = m_found.places[file];
    all.insert(all.end(), places.begin(), places.end());
  }

  void count(Variation variation, std::uint32_t file) {
    std::string key = variation.before;
    for (const std::string* part : {&variation.after, &variation.valueA, &variation.valueB}) {
      key += '\0' + *part;
    }
    key += static_cast<char>(variation.run);
    const auto [known, isNew] = m_index.emplace(std::move(key), m_found.all.size());
    if (isNew) {
      m_found.all.push_back(std::move(variation));
    }
    Variation& counted = m_found.all[known->second];
    ++counted.places;
    if (counted.files.empty() || counted.files.back() != file) {
      counted.files.push_back(file);
    }
  }

  /// Places of several runs in one order without overlaps, as searching in them requires.
  static void sortPlaces(std::vector<VaryingPlace>& places) {
    std::sort(places.begin(), places.end(),
              [](const VaryingPlace& a, const VaryingPlace& b) { return a.beginA < b.beginA; });
    std::vector<VaryingPlace> joined;
    for (const VaryingPlace& place : places) {
      if (!joined.empty() && place.beginA < joined.back().endA) {
        joined.back().endA = std::max(joined.back().endA, place.endA);
      } else if (joined.empty() || place.beginA != joined.back().beginA ||
                 place.endA != joined.back().endA) {
        joined.push_back(place);
      }
    }
    places = std::move(joined);
  }

  RunTexts& m_texts;
  Variations m_found;
  std::unordered_map<std::string, std::size_t> m_index;  ///< in `m_found.all`
};

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

}  // namespace

Variations findVariations(RunTexts& texts) {
  return Collector(texts).collect();
}

std::string textBefore(std::string_view text, std::size_t place, std::size_t least) {
  std::size_t begin = std::max(least, place - std::min(place, kContext));
  while (begin < place && isContinuation(text[begin])) {
    ++begin;
  }
  return std::string(text.substr(begin, place - begin));
}

std::string textAfter(std::string_view text, std::size_t place, std::size_t most) {
  std::size_t end = std::min({most, text.size(), place + kContext});
  while (end > place && end < text.size() && isContinuation(text[end])) {
    --end;
  }
  return std::string(text.substr(place, end - place));
}

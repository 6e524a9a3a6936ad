#include "cli/commands/HiddenDifferences.h"

#include <algorithm>
#include <iostream>

#include "cli/report/ClosingSummary.h"
#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Printable.h"

HiddenDifferences::HiddenDifferences(const OrvOriginMap& master, const OrvOriginMap& actual)
    : m_maps{&master, &actual}, m_alignment(alignMasks(master, actual)) {
  for (const MaskPair& pair : m_alignment.pairs) {
    if (pair.master == nullptr || pair.output == nullptr ||
        hiddenText(master, pair.master) != hiddenText(actual, pair.output)) {
      m_byRule[(pair.master != nullptr ? pair.master : pair.output)->rule].push_back(pair);
      ++m_count;
    }
  }
}

std::size_t HiddenDifferences::countOf(std::size_t rule) const {
  const auto found = m_byRule.find(rule);
  return found != m_byRule.end() ? found->second.size() : 0;
}

void HiddenDifferences::print(std::size_t most, const Palette& palette) const {
  for (const auto& [rule, pairs] : m_byRule) {
    std::cout << '\n'
              << printable(m_maps[0]->rules()[rule].name) << " hides "
              << ::countOf(pairs.size(), "difference") << '\n';
    const std::size_t shown = std::min(most, pairs.size());
    for (std::size_t i = 0; i < shown; ++i) {
      print(pairs[i], palette);
    }
    if (shown < pairs.size()) {
      std::cout << "    ... and " << pairs.size() - shown << " more (-v shows all)\n";
    }
  }
}

void HiddenDifferences::print(const MaskPair& pair, const Palette& palette) const {
  const std::string_view master = hiddenText(*m_maps[0], pair.master);
  const std::string_view actual = hiddenText(*m_maps[1], pair.output);
  const auto ends = std::mismatch(master.begin(), master.end(), actual.begin(), actual.end());
  const auto offset = static_cast<std::size_t>(ends.first - master.begin());
  const std::string masterPlace = place(0, pair.master, offset);
  const std::string actualPlace = place(1, pair.output, offset);
  const std::size_t width = std::max(masterPlace.size(), actualPlace.size());
  const auto printSide = [&](const char* side, std::string where, const std::string& text) {
    where.resize(width, ' ');
    std::cout << "    " << side << ' ' << where << "  " << text << '\n';
  };
  printSide("master", masterPlace, excerpt(0, pair, offset, palette));
  printSide("actual", actualPlace, excerpt(1, pair, offset, palette));
}

std::string HiddenDifferences::place(std::size_t side, const Mask* mask, std::size_t offset) const {
  if (mask == nullptr) {
    return {};
  }
  const OrvOriginMap::Position position = m_maps[side]->position(mask->begin + offset);
  return std::to_string(position.line) + ':' + std::to_string(position.column);
}

/// The place of the difference, or all of a mask that only one file has.
std::string HiddenDifferences::excerpt(std::size_t side, const MaskPair& pair, std::size_t offset,
                                       const Palette& palette) const {
  constexpr std::size_t kColumns = 60;
  const OrvOriginMap& map = *m_maps[side];
  const Mask* const mask = side == 0 ? pair.master : pair.output;
  if (mask == nullptr) {
    return "(nothing)";
  }
  if (pair.master == nullptr || pair.output == nullptr) {
    return palette.paint(Color::Yellow, shortened(hiddenText(map, mask), kColumns));
  }
  const char* const text = map.original().data();
  const Excerpt shown = excerptAround(text, startOfCharacter(text, mask->begin + offset));
  return shown.before + palette.paint(Color::Yellow, shown.first) + shown.rest;
}

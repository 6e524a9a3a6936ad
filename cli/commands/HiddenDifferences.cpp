#include "cli/commands/HiddenDifferences.h"

#include <algorithm>
#include <iostream>

#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Printable.h"

HiddenDifferences::HiddenDifferences(const OrvOriginMap& master, const OrvOriginMap& actual)
    : m_maps{&master, &actual}, m_alignment(alignMasks(master, actual)) {
  for (const MaskPair& pair : m_alignment.pairs) {
    if (const auto difference = findHiddenDifference(master, actual, pair)) {
      m_byRule[(pair.master != nullptr ? pair.master : pair.output)->rule].push_back(
          {pair, *difference});
      ++m_count;
    }
  }
}

std::size_t HiddenDifferences::countOf(std::size_t rule) const {
  const auto found = m_byRule.find(rule);
  return found != m_byRule.end() ? found->second.size() : 0;
}

void HiddenDifferences::print(std::size_t most, const Palette& palette) const {
  for (const auto& [rule, all] : m_byRule) {
    std::size_t worth = 0;
    for (const Hidden& hidden : all) {
      if (!isWorthShowing(hidden)) {
        continue;
      }
      if (worth == 0) {
        std::cout << '\n'
                  << printable(m_maps[0]->rules()[rule].name) << " hides "
                  << ::countOf(all.size(), "difference") << '\n';
      }
      if (++worth <= most) {
        print(hidden, palette);
      }
    }
    if (worth > most) {
      std::cout << "    ... and " << worth - most << " more (-v shows all)\n";
    }
  }
}

bool HiddenDifferences::isWorthShowing(const Hidden& hidden) const {
  const auto isBlank = [](std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
  };
  return !isBlank(hiddenText(*m_maps[0], hidden.masks.master)) ||
         !isBlank(hiddenText(*m_maps[1], hidden.masks.output));
}

void HiddenDifferences::print(const Hidden& hidden, const Palette& palette) const {
  const auto [master, actual] = hidden.masks;
  const std::string masterPlace = place(0, master, hidden.at.inMaster);
  const std::string actualPlace = place(1, actual, hidden.at.inOutput);
  const std::size_t width = std::max(masterPlace.size(), actualPlace.size());
  const bool isAlone = master == nullptr || actual == nullptr;
  const auto printSide = [width](const char* side, std::string where, const std::string& text) {
    where.resize(width, ' ');
    std::cout << "    " << side << ' ' << where << "  " << text << '\n';
  };
  printSide("master", masterPlace, excerpt(0, master, hidden.at.inMaster, isAlone, palette));
  printSide("actual", actualPlace, excerpt(1, actual, hidden.at.inOutput, isAlone, palette));
}

std::string HiddenDifferences::place(std::size_t side, const Mask* mask, std::size_t offset) const {
  if (mask == nullptr) {
    return {};
  }
  const OrvOriginMap::Position position = m_maps[side]->position(mask->begin + offset);
  return std::to_string(position.line) + ':' + std::to_string(position.column);
}

/// The place of the difference, or all of a mask that only this file has.
std::string HiddenDifferences::excerpt(std::size_t side, const Mask* mask, std::size_t offset,
                                       bool isAlone, const Palette& palette) const {
  constexpr std::size_t kColumns = 60;
  const OrvOriginMap& map = *m_maps[side];
  if (mask == nullptr) {
    return "(nothing)";
  }
  if (isAlone) {
    return palette.paint(Color::Yellow, shortened(hiddenText(map, mask), kColumns));
  }
  const char* const text = map.original().data();
  const Excerpt shown = excerptAround(text, startOfCharacter(text, mask->begin + offset));
  return shown.before + palette.paint(Color::Yellow, shown.first) + shown.rest;
}

#include "cli/review/ReviewWalk.h"

#include <algorithm>
#include <string_view>

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool holds(std::string_view text, std::string_view wanted) {
  return std::search(text.begin(), text.end(), wanted.begin(), wanted.end(),
                     [](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

bool holds(const PairRecord& pair, std::string_view wanted) {
  return holds(pair.report, wanted) || holds(pair.master, wanted) || holds(pair.output, wanted) ||
         holds(pair.message, wanted);
}

bool holds(const ReviewItem& item, std::string_view wanted) {
  return holds(item.headline, wanted) ||
         std::any_of(item.changes.begin(), item.changes.end(), [&](const ChangeGroup& change) {
           return holds(change.id, wanted) || holds(change.removed, wanted) ||
                  holds(change.added, wanted);
         });
}

}  // namespace

std::size_t ReviewWalk::pair() const {
  return m_place.index ? item().pairs[*m_place.index] : item().example;
}

void ReviewWalk::goTo(const ReviewDecisions::Place& place) {
  m_place = {place.item, std::nullopt};
  if (place.pair) {
    const auto& pairs = item().pairs;
    const auto found = std::find(pairs.begin(), pairs.end(), *place.pair);
    m_place.index = static_cast<std::size_t>(found - pairs.begin());
  }
}

void ReviewWalk::enterPairs() {
  const auto& pairs = item().pairs;
  const auto open = std::find_if(pairs.begin(), pairs.end(),
                                 [this](std::size_t pair) { return !m_decisions.of(pair); });
  m_place.index =
      open != pairs.end() ? static_cast<std::size_t>(open - pairs.begin()) : std::size_t{0};
}

void ReviewWalk::goBack() {
  if (m_place.index && *m_place.index > 0) {
    --*m_place.index;
  } else if (m_place.index) {
    m_place.index.reset();
  } else if (m_place.item > 0) {
    --m_place.item;
  }
}

bool ReviewWalk::goOn() {
  if (m_place.index && *m_place.index + 1 < item().pairs.size()) {
    ++*m_place.index;
    return true;
  }
  const bool hasNext = m_place.item + 1 < m_material.items().size();
  if (hasNext) {
    m_place = {m_place.item + 1, std::nullopt};
  }
  return hasNext;
}

bool ReviewWalk::advance() {
  return m_place.index && *m_place.index + 1 < item().pairs.size() ? goOn()
                                                                   : goToOpen(m_place.item + 1);
}

bool ReviewWalk::goToOpen() {
  return goToOpen(m_place.item);
}

bool ReviewWalk::goToOpen(std::size_t first) {
  const std::size_t count = m_material.items().size();
  for (std::size_t turn = 0; turn < count; ++turn) {
    const std::size_t item = (first + turn) % count;
    if (m_decisions.isOpen(item)) {
      m_place = {item, std::nullopt};
      return true;
    }
  }
  m_place.index.reset();
  return false;
}

bool ReviewWalk::find(const std::string& text) {
  const auto& items = m_material.items();
  std::size_t next = m_place.index ? *m_place.index + 1 : 0;  // pair of the item that comes first
  for (std::size_t turn = 0; turn <= items.size(); ++turn, next = 0) {
    const std::size_t number = (m_place.item + turn) % items.size();
    const ReviewItem& item = items[number];
    if (turn > 0 && holds(item, text)) {
      m_place = {number, std::nullopt};
      return true;
    }
    for (; next < item.pairs.size(); ++next) {
      if (holds(m_material.pairs()[item.pairs[next]].record, text)) {
        const bool isAlone = item.pairs.size() == 1;
        m_place = {number, isAlone ? std::nullopt : std::optional(next)};
        return true;
      }
    }
  }
  return false;
}

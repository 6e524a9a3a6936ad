#include "cli/review/Pager.h"

#include <algorithm>
#include <utility>

#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kOtherRows = 4;  // title, line, status, keys

std::string line(std::size_t columns) {
  std::string text;
  for (std::size_t i = 0; i < columns; ++i) {
    text += "\u2500";
  }
  return text;
}

/// The end of what was typed, as much as fits, and its columns.
std::pair<std::string, std::size_t> tailOf(std::string_view text, std::size_t columns) {
  std::vector<PrintableCharacter> characters;
  while (!text.empty()) {
    characters.push_back(firstPrintable(text));
    text.remove_prefix(characters.back().length);
  }
  std::string tail;
  std::size_t used = 0;
  for (auto i = characters.rbegin(); i != characters.rend() && used + i->columns <= columns; ++i) {
    tail.insert(0, i->shown);
    used += i->columns;
  }
  return {tail, used};
}

}  // namespace

std::vector<std::string> Pager::layOut(const Page& page) {
  const auto [rows, columns] = m_screen.size();
  m_rows = page.rows.size();
  m_room = std::max(rows, kOtherRows + 1) - kOtherRows;
  m_top = std::min(m_top, m_rows - std::min(m_rows, m_room));
  const std::size_t used = page.title.size() + page.state.size();
  std::vector<std::string> shown = {m_palette.paint(Color::Bold, page.title) +
                                        std::string(columns - std::min(columns, used), ' ') +
                                        (used < columns ? page.state : ""),
                                    m_palette.paint(Color::Dim, line(columns))};
  for (std::size_t i = 0; i < m_room; ++i) {
    shown.push_back(m_top + i < m_rows ? clipped(page.rows[m_top + i], columns) : "");
  }
  return shown;
}

std::string Pager::position() const {
  return m_rows <= m_room ? ""
                          : "rows " + std::to_string(m_top + 1) + '-' +
                                std::to_string(std::min(m_rows, m_top + m_room)) + " of " +
                                std::to_string(m_rows);
}

void Pager::show(const Page& page, const Footer& footer) {
  std::vector<std::string> rows = layOut(page);
  std::string place = position();
  place += (place.empty() || footer.view.empty() ? "" : ", ") + footer.view;
  rows.push_back(footer.status.empty()
                     ? m_palette.paint(Color::Dim, place)
                     : m_palette.paint(Color::Yellow, clipped(footer.status, width())));
  rows.push_back(clipped(footer.keys, width()));
  m_screen.show(rows);
}

void Pager::ask(const Page& page, const std::string& question, std::string_view typed) {
  std::vector<std::string> rows = layOut(page);
  const std::size_t columns = width();
  const auto [tail, used] = tailOf(typed, columns - std::min(columns, question.size() + 1));
  rows.emplace_back();
  rows.push_back(question + tail);
  m_screen.show(rows, std::min(columns - 1, question.size() + used));
}

bool Pager::scroll(const Key& key) {
  const std::size_t last = m_rows - std::min(m_rows, m_room);
  const std::size_t page = std::max<std::size_t>(1, m_room - 1);
  const auto isKey = [&key](Key::Kind kind, const char* text) {
    return key.kind == kind || (key.kind == Key::Kind::Text && key.text == text);
  };
  if (isKey(Key::Kind::Up, "k")) {
    m_top -= std::min<std::size_t>(1, m_top);
  } else if (isKey(Key::Kind::Down, "j")) {
    m_top = std::min(last, m_top + 1);
  } else if (key.kind == Key::Kind::PageUp) {
    m_top -= std::min(page, m_top);
  } else if (isKey(Key::Kind::PageDown, " ")) {
    m_top = std::min(last, m_top + page);
  } else if (key.kind == Key::Kind::Home) {
    m_top = 0;
  } else if (key.kind == Key::Kind::End) {
    m_top = last;
  } else {
    return false;
  }
  return true;
}

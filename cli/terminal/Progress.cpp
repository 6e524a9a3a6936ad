#include "cli/terminal/Progress.h"

#include <iostream>
#include <string_view>

#include "cli/terminal/Printable.h"
#include "cli/terminal/Terminal.h"

namespace {

constexpr std::chrono::milliseconds kInterval(100);

/// The end of `text`, as much as fits in `columns`; in a path, the end matters most.
std::string fitted(std::string_view text, std::size_t columns) {
  std::size_t width = 0;
  for (std::string_view rest = text; !rest.empty();) {
    const PrintableCharacter character = firstPrintable(rest);
    width += character.columns;
    rest.remove_prefix(character.length);
  }
  while (width > columns) {
    const PrintableCharacter character = firstPrintable(text);
    width -= character.columns;
    text.remove_prefix(character.length);
  }
  return printable(text);
}

}  // namespace

Progress::Progress(bool enabled)
    : m_stream(this), m_formerTie(std::cout.tie(&m_stream)), m_enabled(enabled) {}

Progress::~Progress() {
  std::cout.flush();
  clear();
  std::cout.tie(m_formerTie);
}

void Progress::show(std::size_t number, std::size_t total, std::size_t notPassed,
                    const std::string& what) {
  const Clock::time_point now = m_enabled ? Clock::now() : m_shownAt;
  if (now - m_shownAt < kInterval) {
    return;
  }
  m_shownAt = now;
  const std::string count =
      "[" + std::to_string(number) + "/" + std::to_string(total) +
      (notPassed > 0 ? ", " + std::to_string(notPassed) + " not passed] " : "] ");
  const std::size_t width = terminalWidth();
  const std::size_t room = width > count.size() + 1 ? width - count.size() - 1 : 0;
  std::cerr << "\r\033[K" << count << fitted(what, room) << std::flush;
  m_visible = true;
}

int Progress::sync() {
  clear();
  return 0;
}

void Progress::clear() {
  if (m_visible) {
    std::cerr << "\r\033[K" << std::flush;
    m_visible = false;
  }
}

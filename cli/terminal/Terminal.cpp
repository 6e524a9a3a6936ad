#include "cli/terminal/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

bool isCapableTerminal(int descriptor) {
  const char* const kind = std::getenv("TERM");
  return isatty(descriptor) != 0 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

bool isColorUnwanted() {
  const char* const setting = std::getenv("NO_COLOR");
  return setting != nullptr && *setting != '\0';
}

const char* codeOf(Color color) {
  switch (color) {
    case Color::Green:
      return "\033[32m";
    case Color::Yellow:
      return "\033[33m";
    case Color::Dim:
      return "\033[2m";
    case Color::Bold:
      return "\033[1m";
    case Color::RedMarked:
      return "\033[1;4;31m";
    case Color::GreenMarked:
      return "\033[1;4;32m";
    case Color::Red:
      break;
  }
  return "\033[31m";
}

std::optional<std::size_t> widthOf(int descriptor) {
  winsize size = {};
  const bool isKnown = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? std::optional<std::size_t>(size.ws_col) : std::nullopt;
}

}  // namespace

Palette::Palette(ColorChoice choice)
    : m_colored(choice == ColorChoice::Always ||
                (choice == ColorChoice::Auto && !isColorUnwanted() &&
                 isCapableTerminal(STDOUT_FILENO))) {}

std::string Palette::paint(Color color, std::string_view text) const {
  return m_colored ? codeOf(color) + std::string(text) + "\033[0m" : std::string(text);
}

bool canShowProgress() {
  return isCapableTerminal(STDERR_FILENO);
}

bool canShowScreen() {
  return isatty(STDIN_FILENO) != 0 && isCapableTerminal(STDOUT_FILENO);
}

std::size_t terminalWidth() {
  constexpr std::size_t kUsualWidth = 80;
  return widthOf(STDERR_FILENO).value_or(kUsualWidth);
}

std::optional<std::size_t> outputWidth() {
  return widthOf(STDOUT_FILENO);
}

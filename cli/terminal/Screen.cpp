#include "cli/terminal/Screen.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string_view>

// Signals are blocked but while `wait` waits, so that none can get lost between looking for one and
// waiting. Handlers only take notes, except those of faults, which give the terminal back and let
// the fault take its course.

namespace {

constexpr std::string_view kTake =
    "\033[?1049h"   // the other screen
    "\033[?7l"      // no row runs over into the next, whatever the width of its characters
    "\033[?25l"     // no cursor
    "\033[?2004h";  // tell what is pasted from what is typed
constexpr std::string_view kGiveBack = "\033[?2004l\033[?25h\033[?7h\033[m\033[?1049l";

constexpr std::array kNoted = {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGTSTP, SIGCONT};
constexpr std::array kFaults = {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};

volatile std::sig_atomic_t isNoted[NSIG];
volatile std::sig_atomic_t isTaken = 0;
termios formerModes;

/// Safe in a signal handler. What a terminal that is gone does not take is nobody's loss.
void writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR && errno != EAGAIN) {
      return;
    }
    bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

/// Safe in a signal handler. Keys that were typed ahead must not become a command of the shell.
void giveBack() {
  if (isTaken != 0) {
    isTaken = 0;
    writeAll(kGiveBack);
    tcflush(STDIN_FILENO, TCIFLUSH);
    tcsetattr(STDIN_FILENO, TCSANOW, &formerModes);
  }
}

void note(int signal) {
  isNoted[signal] = 1;
}

void fail(int signal) {
  giveBack();
  std::signal(signal, SIG_DFL);
  std::raise(signal);  // takes effect when this handler returns
}

void handle(int signal, void (*handler)(int), struct sigaction* former) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, former);
}

bool takeNote(int signal) {
  const bool result = isNoted[signal] != 0;
  isNoted[signal] = 0;
  return result;
}

template <typename Signals>
sigset_t setOf(const Signals& signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

Screen::Screen() {
  static_assert(kNoted.size() + kFaults.size() == kSignals);
  std::cout.flush();
  tcgetattr(STDIN_FILENO, &formerModes);
  const sigset_t noted = setOf(kNoted);
  sigprocmask(SIG_BLOCK, &noted, &m_formerMask);
  std::size_t i = 0;
  for (const int signal : kNoted) {
    takeNote(signal);
    handle(signal, note, &m_formerActions[i]);
    if (m_formerActions[i].sa_handler == SIG_IGN) {  // such as SIGHUP, by nohup
      sigaction(signal, &m_formerActions[i], nullptr);
    }
    ++i;
  }
  for (const int signal : kFaults) {
    handle(signal, fail, &m_formerActions[i++]);
  }
  take();
}

Screen::~Screen() {
  giveBack();
  sigprocmask(SIG_SETMASK, &m_formerMask, nullptr);  // what is pending is still only noted
  std::size_t i = 0;
  for (const int signal : kNoted) {
    sigaction(signal, &m_formerActions[i++], nullptr);
  }
  for (const int signal : kFaults) {
    sigaction(signal, &m_formerActions[i++], nullptr);
  }
}

void Screen::take() {
  termios modes = formerModes;
  modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN);
  modes.c_cc[VMIN] = 1;
  modes.c_cc[VTIME] = 0;
  isTaken = 1;
  tcsetattr(STDIN_FILENO, TCSADRAIN, &modes);
  writeAll(kTake);
  m_shown.clear();
}

void Screen::suspend() {
  giveBack();
  struct sigaction former = {};
  handle(SIGTSTP, SIG_DFL, &former);
  const sigset_t stop = setOf(std::array{SIGTSTP});
  std::raise(SIGTSTP);
  sigprocmask(SIG_UNBLOCK, &stop, nullptr);  // stops here
  sigprocmask(SIG_BLOCK, &stop, nullptr);
  sigaction(SIGTSTP, &former, nullptr);
  take();
}

Screen::Size Screen::size() const {
  constexpr Size kUsual = {24, 80};
  winsize size = {};
  const bool isKnown =
      ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
  return isKnown ? Size{size.ws_row, size.ws_col} : kUsual;
}

void Screen::show(const std::vector<std::string>& rows, std::optional<std::size_t> cursor) {
  std::string frame = "\033[?25l";
  if (m_shown.empty()) {
    frame += "\033[2J";
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i >= m_shown.size() || rows[i] != m_shown[i]) {
      frame += "\033[" + std::to_string(i + 1) + ";1H\033[K" + rows[i];
    }
  }
  frame += "\033[" + std::to_string(rows.size() + 1) + ";1H";
  if (rows.size() < m_shown.size()) {
    frame += "\033[J";
  }
  if (cursor) {
    frame +=
        "\033[" + std::to_string(rows.size()) + ';' + std::to_string(*cursor + 1) + "H\033[?25h";
  }
  writeAll(frame);
  m_shown = rows;
}

std::optional<Screen::Event> Screen::takeEvent() {
  if (takeNote(SIGHUP)) {
    return Event::Disconnect;
  }
  if (takeNote(SIGTERM)) {
    return Event::Terminate;
  }
  if (takeNote(SIGINT)) {
    return Event::Interrupt;
  }
  const bool isResized = takeNote(SIGWINCH);
  const bool isContinued = takeNote(SIGCONT);
  if (takeNote(SIGTSTP)) {
    suspend();
    takeNote(SIGCONT);
    return Event::Redraw;
  }
  if (isContinued) {  // after SIGSTOP, behind our back
    take();
  }
  if (isResized) {
    m_shown.clear();
  }
  return isResized || isContinued ? std::optional(Event::Redraw) : std::nullopt;
}

/// Reads what there is. Returns false when the terminal is gone.
bool Screen::readInput() {
  char buffer[4096];
  const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
  if (count > 0) {
    m_input.append(buffer, static_cast<std::size_t>(count));
    m_isQuiet = false;
  }
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

Screen::Event Screen::wait(Key& key) {
  constexpr timespec kPatience = {0, 100'000'000};  // for the rest of an escape sequence
  for (;;) {
    if (const auto event = takeEvent()) {
      return *event;
    }
    if (const auto next = takeKey(m_input, m_isQuiet)) {
      key = *next;
      return Event::Key;
    }
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    const int ready = ppoll(&input, 1, m_input.empty() ? nullptr : &kPatience, &m_formerMask);
    if (ready == 0) {
      m_isQuiet = true;
    } else if (ready > 0 && !readInput()) {
      return Event::Disconnect;
    }
  }
}

Screen::Pause::Pause(Screen& screen) : m_screen(screen) {
  giveBack();
  handle(SIGTSTP, SIG_DFL, &m_former[0]);  // Ctrl-Z suspends both programs
  handle(SIGINT, SIG_IGN, &m_former[1]);
  handle(SIGQUIT, SIG_IGN, &m_former[2]);
  const sigset_t stop = setOf(std::array{SIGTSTP});
  sigprocmask(SIG_UNBLOCK, &stop, nullptr);
}

Screen::Pause::~Pause() {
  const sigset_t stop = setOf(std::array{SIGTSTP});
  sigprocmask(SIG_BLOCK, &stop, nullptr);
  sigaction(SIGTSTP, &m_former[0], nullptr);
  sigaction(SIGINT, &m_former[1], nullptr);
  sigaction(SIGQUIT, &m_former[2], nullptr);
  takeNote(SIGCONT);
  m_screen.take();
}

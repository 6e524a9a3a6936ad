#include "cli/system/Interrupt.h"

namespace {

constexpr std::array kStopSignals = {SIGINT, SIGTERM};

volatile std::sig_atomic_t stopSignal = 0;
volatile std::sig_atomic_t readerGone = 0;

void rememberStop(int signal) {
  if (stopSignal != 0) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);  // ends the program once this handler returns
  }
  stopSignal = signal;
}

void rememberReaderGone(int /*signal*/) {
  readerGone = 1;
}

/// Handlers, unlike ignored signals, are not passed on to programs that are started.
void handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

InterruptWatch::InterruptWatch() {
  for (std::size_t i = 0; i < kStopSignals.size(); ++i) {
    sigaction(kStopSignals[i], nullptr, &m_former[i]);
    if (m_former[i].sa_handler != SIG_IGN) {  // as it is for what a script starts with "&"
      handle(kStopSignals[i], rememberStop);
    }
  }
}

InterruptWatch::~InterruptWatch() {
  for (std::size_t i = 0; i < kStopSignals.size(); ++i) {
    sigaction(kStopSignals[i], &m_former[i], nullptr);
  }
}

bool InterruptWatch::isStopWanted() {
  return stopSignal != 0 || readerGone != 0;
}

void outliveFailedWrites() {
  handle(SIGPIPE, rememberReaderGone);
  handle(SIGXFSZ, [](int /*signal*/) {});
}

bool isReaderGone() {
  return readerGone != 0;
}

std::optional<ExitStatus> stopStatus() {
  if (stopSignal != 0) {
    return stopSignal == SIGTERM ? kExitTerminated : kExitInterrupted;
  }
  return readerGone != 0 ? std::optional(kExitTrouble) : std::nullopt;
}

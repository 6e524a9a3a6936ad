#include "cli/Interrupt.h"

namespace {

volatile std::sig_atomic_t stopWanted = 0;

void rememberStop(int /*signal*/) {
  stopWanted = 1;
}

}  // namespace

InterruptWatch::InterruptWatch() {
  struct sigaction action = {};
  action.sa_handler = rememberStop;
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, nullptr, &m_former);
  if (m_former.sa_handler != SIG_IGN) {  // as it is for what a script starts with "&"
    sigaction(SIGINT, &action, nullptr);
  }
}

InterruptWatch::~InterruptWatch() {
  sigaction(SIGINT, &m_former, nullptr);
}

bool InterruptWatch::isStopWanted() {
  return stopWanted != 0;
}

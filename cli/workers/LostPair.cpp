#include "cli/workers/LostPair.h"

#include <sys/wait.h>

#include <cstring>
#include <sstream>
#include <string>

namespace {

/// What became of a worker, such as "signal 11 (Segmentation fault)".
std::string describeEnd(int waitStatus) {
  if (WIFSIGNALED(waitStatus)) {
    const int signal = WTERMSIG(waitStatus);
    return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ')';
  }
  return "the process ended with status " + std::to_string(WEXITSTATUS(waitStatus));
}

}  // namespace

void describeLoss(const WorkerLoss& loss, double secondsPerPair, PairRecord& pair) {
  pair.verdict = loss.timedOut ? Verdict::TimedOut : Verdict::Crashed;
  std::ostringstream words;
  if (loss.timedOut) {
    words << "took longer than " << secondsPerPair << " s (--timeout)";
  } else {
    words << "the process that compared the pair died: " << describeEnd(loss.waitStatus);
  }
  pair.message = words.str();
}

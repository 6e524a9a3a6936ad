#include "cli/workers/LostPair.h"

#include <sys/wait.h>

#include <cstring>
#include <sstream>
#include <string>

#include "cli/diff/PairDiff.h"

namespace {

/// What became of a worker, such as "signal 11 (Segmentation fault)".
std::string describeEnd(int waitStatus) {
  if (WIFSIGNALED(waitStatus)) {
    const int signal = WTERMSIG(waitStatus);
    return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ')';
  }
  return "the process ended with status " + std::to_string(WEXITSTATUS(waitStatus));
}

std::string describeCause(const WorkerLoss& loss, double secondsPerPair) {
  std::ostringstream words;
  if (loss.timedOut) {
    words << "took longer than " << secondsPerPair << " s (--timeout)";
  } else {
    words << "the process that compared the pair died: " << describeEnd(loss.waitStatus);
  }
  return words.str();
}

}  // namespace

bool isCompared(const PairRecord& pair) {
  return pair.verdict != Verdict::NotRun;  // which is what a pair starts with
}

void describeLoss(const WorkerLoss& loss, double secondsPerPair, PairRecord& pair) {
  const std::string cause = describeCause(loss, secondsPerPair);
  if (isCompared(pair)) {
    pair.difference = onlyNote("how they differ could not be found out: " + cause);
    return;
  }
  pair.verdict = loss.timedOut ? Verdict::TimedOut : Verdict::Crashed;
  pair.message = cause;
}

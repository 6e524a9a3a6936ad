#pragma once

#include <optional>
#include <string_view>

/// What came out of one pair. Only `Passed` is a pass; `Known` is none, but no failure either.
enum class Verdict {
  Passed,
  Differs,
  Missing,   ///< the master or the output cannot be opened
  Failed,    ///< the output is not a valid document of its format
  Partly,    ///< equal, but only up to a NUL byte; the rest was not compared
  Error,     ///< the comparison could not be carried out
  TimedOut,  ///< the comparison took longer than it may
  Crashed,   ///< the process that compared the pair died
  Stale,     ///< the output is older than the run it should come from
  Known,     ///< differs, but only in what the suite's file accepts for a while
  NotRun     ///< the run ended before it came to this pair
};

/// The word that people and records see: "passed", "differs", "timed-out", ...
std::string_view wordFor(Verdict verdict);

/// Whether somebody has to do something about the pair.
bool isFailure(Verdict verdict);

/// The verdict of a word, or nothing for another word.
std::optional<Verdict> verdictFor(std::string_view word);

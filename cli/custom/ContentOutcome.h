#pragma once

#include <string>
#include <vector>

/// What a comparison of two contents came to.
struct ContentOutcome {
  enum class Verdict {
    Equal,
    Differs,
    BadOutput,  ///< it cannot be what it should be: not JSON, no PNG
    BadMaster   ///< nothing can be compared with it; that is no verdict on the output
  };
  Verdict verdict = Verdict::Equal;

  /// Of files that are equal but not byte for byte: what was allowed, each once, for people.
  std::vector<std::string> rules;

  /// What is wrong with the file that the verdict is about, to be printed after its name. May be
  /// empty when the files only differ.
  std::string problem;

  static ContentOutcome differs(std::string problem = {}) {
    return {Verdict::Differs, {}, std::move(problem)};
  }
};

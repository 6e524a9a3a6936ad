#pragma once

#include <functional>
#include <string>
#include <vector>

/// What a word on a command line may become.
struct Candidate {
  std::string value;
  std::string description;  ///< empty: none
};

struct Candidates {
  std::vector<Candidate> all;  ///< also those that do not begin with what was typed
  bool arePaths = false;
};

/// What there is to know of the value that is to be completed.
struct ValueContext {
  std::string name;                  ///< of the value, as in the help text: "FORMAT"
  std::string typed;                 ///< what is there of it
  std::vector<std::string> records;  ///< named by other words, with the last one last
};

/// What the value may be; nothing for one that only the user can know, such as a number.
Candidates candidatesFor(const ValueContext& context);

/// The path that a word means: the shell passes a "~/" at its beginning as it was typed.
std::string expandHome(const std::string& word);

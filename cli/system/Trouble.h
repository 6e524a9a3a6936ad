#pragma once

#include <stdexcept>

/// Why the program cannot do what it was asked to. The text names the file or the word in question;
/// `main` prints it and ends with `kExitTrouble`.
class Trouble : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

#pragma once

#include <stdexcept>

/// A command cannot do what it was asked to do. The message names the file or argument at fault;
/// `main` prints it and exits with `kExitTrouble`.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

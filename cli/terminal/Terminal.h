#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// How much a command says.
enum class Verbosity { Quiet, Normal, Verbose };

enum class ColorChoice { Auto, Always, Never };

enum class Color { Red, Green, Yellow };

/// Puts colour into output, where that is wanted.
class Palette {
 public:
  /// Decides for standard output as it is now: `Auto` is colour on a terminal that knows it, unless
  /// NO_COLOR is set.
  explicit Palette(ColorChoice choice);

  std::string paint(Color color, std::string_view text) const;

 private:
  bool m_colored;
};

/// Whether standard error is a terminal on which a line can be written over.
bool canShowProgress();

/// Columns of the terminal at standard error.
std::size_t terminalWidth();

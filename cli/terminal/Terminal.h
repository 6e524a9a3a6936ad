#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// How much a command prints.
enum class Verbosity { Quiet, Normal, Verbose };

enum class ColorChoice { Auto, Always, Never };

enum class Color { Red, Green, Yellow, Dim, Bold, RedMarked, GreenMarked };

/// Colours text, if colours are on.
class Palette {
 public:
  /// `Auto` turns colours on if standard output is a terminal that supports them and NO_COLOR is
  /// not set.
  explicit Palette(ColorChoice choice);

  std::string paint(Color color, std::string_view text) const;
  bool isColored() const { return m_colored; }

 private:
  bool m_colored;
};

/// Whether standard error is a terminal that can rewrite a line.
bool canShowProgress();

/// Whether standard input and output are a terminal that can show a whole screen.
bool canShowScreen();

/// Width in columns of the terminal on standard error; 80 if unknown.
std::size_t terminalWidth();

/// Width in columns of the terminal on standard output; none if it is no terminal.
std::optional<std::size_t> outputWidth();

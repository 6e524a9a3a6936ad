#pragma once

#include <string_view>

#include "cli/record/PairRecord.h"
#include "cli/terminal/Terminal.h"

/// Tells a person about pairs: a line with verdict, master and output for every pair that did not
/// pass, with indented lines that say what to look for.
class ResultPrinter {
 public:
  /// Quiet prints nothing, Verbose also what passed. Prints on `std::cout`.
  ResultPrinter(Verbosity verbosity, const Palette& palette);

  void print(const PairRecord& pair) const;

 private:
  bool isWorthALine(const PairRecord& pair) const;
  void printVerdict(const PairRecord& pair) const;
  void printMask(const OutsizedMask& mask) const;
  void printDifference(const PairRecord& pair) const;
  void printSide(std::string_view side, const Excerpt& excerpt) const;

  const Verbosity m_verbosity;
  const Palette& m_palette;
};

/// Prints text of unknown origin on `std::cout`, line by line, indented and escaped, so that none
/// of it can pass for a line of the program.
void printForeign(std::string_view text);

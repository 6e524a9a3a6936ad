#pragma once

#include <string_view>

#include "cli/record/PairRecord.h"
#include "cli/report/DifferencePrinter.h"
#include "cli/terminal/Terminal.h"

/// Tells a person about pairs: a line with verdict, master and output for every pair that did not
/// pass, with indented lines that say what to look for.
class ResultPrinter {
 public:
  /// Quiet prints nothing, Verbose also what passed. Prints on `std::cout`.
  /// `palette` must outlive the printer.
  ResultPrinter(Verbosity verbosity, const Palette& palette, const DifferenceView& view = {});

  void print(const PairRecord& pair) const;

 private:
  bool isWorthALine(const PairRecord& pair) const;
  void printVerdict(const PairRecord& pair) const;
  void printMask(const OutsizedMask& mask) const;

  const Verbosity m_verbosity;
  const Palette& m_palette;
  const DifferencePrinter m_differences;
};

/// Prints text of unknown origin on `std::cout`, line by line, indented and escaped, so that none
/// of it can pass for a line of the program.
void printForeign(std::string_view text);

#pragma once

#include <string_view>

#include "cli/CommandLine.h"
#include "cli/Excerpt.h"
#include "cli/Terminal.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Tells a person about results: a line with verdict, master and actual output for every pair that
/// did not pass, with indented lines that say what to look for.
class ResultPrinter : public OrvDiffListener {
 public:
  /// Quiet prints nothing, Verbose also what passed. Prints on `std::cout`.
  ResultPrinter(Verbosity verbosity, const Palette& palette);

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override;
  void comparisonNotification(const OrvDiffResultFailDiff& result) override;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  void comparisonNotification(const OrvDiffResultFail& result) override;

 private:
  void printVerdict(Color color, std::string_view word, const OrvDiffResult& result) const;
  void printSide(std::string_view side, const Excerpt& excerpt) const;

  const Verbosity m_verbosity;
  const Palette& m_palette;
};

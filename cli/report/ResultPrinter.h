#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Terminal.h"
#include "orvdiff/platform/OrvOutputFormat.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Tells a person about results: a line with verdict, master and actual output for every pair that
/// did not pass, with indented lines that say what to look for.
class ResultPrinter : public OrvDiffListener {
 public:
  /// Quiet prints nothing, Verbose also what passed. Prints on `std::cout`.
  ResultPrinter(Verbosity verbosity, const Palette& palette);

  /// The next results are of this format.
  void startFormat(OrvOutputFormat format) { m_format = format; }

  /// What engines printed while the next result came about; it is shown below that, and makes a
  /// pass worth a line.
  void setEngineOutput(std::string output) { m_engineOutput = std::move(output); }

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override;
  void comparisonNotification(const OrvDiffResultFailDiff& result) override;
  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override;
  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override;
  void comparisonNotification(const OrvDiffResultFail& result) override;

 private:
  void printVerdict(Color color, std::string_view word, const OrvDiffResult& result) const;
  void printSide(std::string_view side, const Excerpt& excerpt) const;

  void printPassed(const OrvDiffResult& result);
  void printEngineOutput();

  const Verbosity m_verbosity;
  const Palette& m_palette;
  std::optional<OrvOutputFormat> m_format;
  std::string m_engineOutput;
};

/// Prints text of unknown origin on `std::cout`, line by line, indented and escaped, so that none
/// of it can pass for a line of the program.
void printForeign(std::string_view text);

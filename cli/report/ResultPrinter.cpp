#include "cli/report/ResultPrinter.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>

#include "cli/suite/MissingReason.h"
#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kIndent = "          ";

const char* orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

/// Whether the file has no third line, which is the first that is read of a VMD report.
bool isWithoutStatistics(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  std::string line;
  int lines = 0;
  while (lines < 3 && std::getline(file, line)) {
    ++lines;
  }
  return lines < 3;
}

}  // namespace

void printForeign(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::cout << kIndent << printable(text.substr(0, end)) << '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

ResultPrinter::ResultPrinter(Verbosity verbosity, const Palette& palette)
    : m_verbosity(verbosity), m_palette(palette) {}

void ResultPrinter::comparisonNotification(const OrvDiffResultPass& result) {
  const auto* const cut = dynamic_cast<const OrvDiffResultPassUpToNul*>(&result);
  if (cut != nullptr && m_verbosity != Verbosity::Quiet) {
    printVerdict(Color::Yellow, "partly", result);
    std::cout << kIndent << printable(cut->getCutFile())
              << " contains a NUL byte; only the text before it was compared\n";
    printEngineOutput();
  } else if (m_verbosity == Verbosity::Verbose ||
             (m_verbosity == Verbosity::Normal && !m_engineOutput.empty())) {
    printPassed(result);
  }
}

void ResultPrinter::printPassed(const OrvDiffResult& result) {
  printVerdict(Color::Green, "passed", result);
  if (m_format == OrvOutputFormat::Vmd && m_verbosity == Verbosity::Verbose &&
      (isWithoutStatistics(result.getMasterName()) ||
       isWithoutStatistics(result.getActualName()))) {
    std::cout << kIndent
              << "nothing was compared: a VMD report of fewer than three lines holds no "
                 "statistics\n";
  }
  printEngineOutput();
}

void ResultPrinter::comparisonNotification(const OrvDiffResultFailDiff& result) {
  if (m_verbosity != Verbosity::Quiet) {
    printVerdict(Color::Red, "differs", result);
    printEngineOutput();
  }
}

void ResultPrinter::comparisonNotification(const OrvDiffResultFailDiffNormalized& result) {
  if (m_verbosity == Verbosity::Quiet) {
    return;
  }
  printVerdict(Color::Red, "differs", result);
  const char* const master = orEmpty(result.getNormalizedMaster());
  const std::size_t position = startOfCharacter(master, result.getDiffPosition());
  const TextPosition place = locate(master, position);
  std::cout << kIndent << "at " << place.line << ':' << place.column << " in the normalised text\n";
  const Excerpt ofMaster = excerptAround(master, position);
  printSide("master: ", ofMaster);
  printSide("actual: ", excerptAround(orEmpty(result.getNormalizedActual()), position));
  printSide("        ", {std::string(ofMaster.columns, ' '), ofMaster.columns, "^", ""});
  printEngineOutput();
}

void ResultPrinter::comparisonNotification(const OrvDiffResultFailFileMissing& result) {
  if (m_verbosity == Verbosity::Quiet) {
    return;
  }
  printVerdict(Color::Yellow, "missing", result);
  const bool isMaster = result.getMissingFile() == result.getMasterName();
  const bool isActual = result.getMissingFile() == result.getActualName();
  std::cout << kIndent
            << (isMaster && isActual ? "it "
                : isMaster           ? "the master "
                                     : "the actual output ")
            << printable(missingReason(result.getMissingFile())) << '\n';
  printEngineOutput();
}

void ResultPrinter::comparisonNotification(const OrvDiffResultFail& result) {
  if (m_verbosity != Verbosity::Quiet) {
    printVerdict(Color::Red, "failed", result);
    printEngineOutput();
  }
}

void ResultPrinter::printEngineOutput() {
  printForeign(m_engineOutput);
  m_engineOutput.clear();
}

void ResultPrinter::printVerdict(Color color, std::string_view word,
                                 const OrvDiffResult& result) const {
  constexpr std::size_t kWordColumns = 9;
  std::cout << m_palette.paint(color, word) << std::string(kWordColumns - word.size(), ' ')
            << printable(result.getMasterName());
  if (result.getActualName() != result.getMasterName()) {
    std::cout << " -> " << printable(result.getActualName());
  }
  std::cout << '\n';
}

void ResultPrinter::printSide(std::string_view side, const Excerpt& excerpt) const {
  std::cout << kIndent << side << excerpt.before << m_palette.paint(Color::Red, excerpt.first)
            << excerpt.rest << '\n';
}

#include "cli/report/ResultPrinter.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "cli/terminal/Printable.h"

namespace {

constexpr const char* kIndent = "          ";

Color colorOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Passed:
      return Color::Green;
    case Verdict::Known:
    case Verdict::Missing:
    case Verdict::Partly:
    case Verdict::NotRun:
      return Color::Yellow;
    default:
      return Color::Red;
  }
}

void printKnownCause(const KnownCause& known) {
  for (const KnownReason& reason : known.reasons) {
    std::cout << kIndent << wordFor(known.verdict) << ", known until " << printable(reason.until)
              << ": " << printable(reason.why) << " (" << printable(reason.place) << ")\n";
  }
}

}  // namespace

void printForeign(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::cout << kIndent << printable(text.substr(0, end)) << '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

ResultPrinter::ResultPrinter(Verbosity verbosity, const Palette& palette,
                             const DifferenceView& view)
    : m_verbosity(verbosity), m_palette(palette), m_differences(view, palette) {}

void ResultPrinter::print(const PairRecord& pair) const {
  if (!isWorthALine(pair)) {
    return;
  }
  printVerdict(pair);
  if (pair.known) {
    printKnownCause(*pair.known);
    return;
  }
  if (pair.mask) {
    printMask(*pair.mask);
  }
  const bool isVerbose = m_verbosity == Verbosity::Verbose;
  const std::string kind = pair.difference ? pair.difference->kind : "";
  if (pair.difference && !(kind == "script" && isVerbose)) {
    m_differences.print(*pair.difference, std::cout);
  } else if (pair.at) {
    std::cout << kIndent << "at " << pair.at->line << ':' << pair.at->column
              << " in the normalised text\n";
  }
  // These two kinds have been made of what was printed.
  if ((kind != "script" && kind != "xml") || isVerbose) {
    printForeign(pair.printed);
  }
}

/// A pass is if somebody asks, if it rests on an outsized mask, or if an engine had something to
/// say about it. What is known, and what a whole format could not run for, is said once, at the
/// end.
bool ResultPrinter::isWorthALine(const PairRecord& pair) const {
  if (m_verbosity != Verbosity::Normal) {
    return m_verbosity == Verbosity::Verbose;
  }
  if (pair.verdict == Verdict::Passed) {
    return pair.mask.has_value() || !pair.printed.empty();
  }
  return pair.verdict != Verdict::NotRun && pair.verdict != Verdict::Known;
}

void ResultPrinter::printVerdict(const PairRecord& pair) const {
  constexpr std::size_t kWordColumns = 9;
  const std::string_view word = wordFor(pair.verdict);
  const std::size_t gap = std::max(kWordColumns, word.size() + 1) - word.size();
  std::cout << m_palette.paint(colorOf(pair.verdict), word) << std::string(gap, ' ');
  if (pair.master.empty()) {
    std::cout << printable(pair.report);
    if (!pair.format.empty()) {
      std::cout << " (" << pair.format << ')';
    }
  } else {
    std::cout << printable(pair.master);
  }
  if (pair.output != pair.master) {
    std::cout << " -> " << printable(pair.output);
  }
  std::cout << '\n';
  if (!pair.message.empty()) {
    std::cout << kIndent << printable(pair.message) << '\n';
  }
}

void ResultPrinter::printMask(const OutsizedMask& mask) const {
  std::ostringstream text;
  text << (mask.rule.empty() ? "all rules together hide " : printable(mask.rule) + " hides ")
       << std::fixed << std::setprecision(1) << mask.percent << " % of the "
       << (mask.isInOutput ? "actual output" : "master") << " (line";
  if (mask.lastLine > mask.firstLine) {
    text << "s " << mask.firstLine << '-' << mask.lastLine;
  } else {
    text << ' ' << mask.firstLine;
  }
  std::cout << kIndent << m_palette.paint(Color::Yellow, "outsized mask: ") << text.str()
            << "), where it differs from the " << (mask.isInOutput ? "master" : "actual output")
            << '\n';
}

#include "cli/custom/NumbersComparison.h"

#include <algorithm>

#include "cli/content/EqualLines.h"
#include "cli/content/NumberTokens.h"

LineMatch matchLines(std::string_view master, std::string_view output, const Tolerance& tolerance) {
  if (master == output) {
    return LineMatch::Same;
  }
  NumberTokens inMaster(master);
  NumberTokens inOutput(output);
  while (!inMaster.isAtEnd() && !inOutput.isAtEnd()) {
    const std::string_view masterWord = inMaster.next();
    const std::string_view outputWord = inOutput.next();
    if (masterWord != outputWord && !tolerance.allows(masterWord, outputWord)) {
      return LineMatch::Different;
    }
  }
  return inMaster.isAtEnd() && inOutput.isAtEnd() ? LineMatch::Allowed : LineMatch::Different;
}

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (!line.empty() && line.back() == '\r') {
    line.remove_suffix(1);
  }
  return line;
}

ContentOutcome compareNumbers(std::string_view master, std::string_view output,
                              const Tolerance& tolerance) {
  ContentOutcome outcome;
  const bool areSameBytes = master == output;
  bool usedTolerance = false;
  while (!master.empty() && !output.empty()) {
    const std::size_t equal = equalLines(master, output, '\0');
    master.remove_prefix(equal);
    output.remove_prefix(equal);
    const LineMatch match = matchLines(takeLine(master), takeLine(output), tolerance);
    if (match == LineMatch::Different) {
      return ContentOutcome::differs();
    }
    usedTolerance = usedTolerance || match == LineMatch::Allowed;
  }
  if (!master.empty() || !output.empty()) {
    return ContentOutcome::differs();
  }
  if (usedTolerance) {
    outcome.rules.emplace_back("tolerance");
  } else if (!areSameBytes) {
    outcome.rules.emplace_back("other line ends");
  }
  return outcome;
}

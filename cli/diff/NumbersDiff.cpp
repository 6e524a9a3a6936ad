#include "cli/diff/NumbersDiff.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cli/content/Decimal.h"
#include "cli/content/NumberTokens.h"
#include "cli/custom/NumbersComparison.h"
#include "cli/custom/OwnFormat.h"
#include "cli/diff/SequenceDiff.h"
#include "cli/diff/TextDiff.h"

namespace {

using Lines = std::vector<std::string_view>;
using Ids = std::vector<std::uint32_t>;

Lines linesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    lines.push_back(takeLine(text));
  }
  return lines;
}

/// A line without its numbers.
std::string skeletonOf(std::string_view line) {
  std::string skeleton;
  for (NumberTokens tokens(line); !tokens.isAtEnd();) {
    const std::string_view word = tokens.next();
    skeleton += Decimal::parse(word) ? std::string_view("\0", 1) : word;
  }
  return skeleton;
}

Ids idsOf(const Lines& lines, std::unordered_map<std::string, std::uint32_t>& known) {
  Ids ids;
  for (const std::string_view line : lines) {
    ids.push_back(known.try_emplace(skeletonOf(line), static_cast<std::uint32_t>(known.size()))
                      .first->second);
  }
  return ids;
}

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string_view line : lines) {
    text.append(line) += '\n';
  }
  return text;
}

/// Makes lines of the output that are the same up to the tolerance those of the master.
void settleLines(const Lines& master, Lines& output, const Tolerance& tolerance) {
  std::unordered_map<std::string, std::uint32_t> known;
  const Ids masterIds = idsOf(master, known);
  const Ids outputIds = idsOf(output, known);
  WorkBudget budget;
  const SequenceDiff diff = diffSequences(masterIds, outputIds, budget);
  std::size_t inMaster = 0;
  std::size_t inOutput = 0;
  const auto settleUpTo = [&](std::size_t end) {
    for (; inMaster < end; ++inMaster, ++inOutput) {
      if (matchLines(master[inMaster], output[inOutput], tolerance) != LineMatch::Different) {
        output[inOutput] = master[inMaster];
      }
    }
  };
  for (const SequenceEdit& edit : diff.edits) {
    settleUpTo(edit.beginA);
    inMaster = edit.endA;
    inOutput = edit.endB;
  }
  settleUpTo(master.size());
}

}  // namespace

Difference numbersDifference(const DiffRequest& request) {
  const Lines master = linesOf(request.master);
  Lines output = linesOf(request.output);
  settleLines(master, output, request.ownRules<NumbersRules>()->tolerance);
  const std::string masterText = joined(master);
  const std::string outputText = joined(output);
  DiffRequest settled = request;
  settled.master = masterText;
  settled.output = outputText;
  return textDifference(settled);
}

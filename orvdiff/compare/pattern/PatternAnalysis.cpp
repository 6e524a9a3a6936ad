#include "orvdiff/compare/pattern/PatternAnalysis.h"

#include <algorithm>
#include <cstdint>

namespace orvdiff::pattern {
namespace {

using Kind = PatternNode::Kind;
using Sequence = PatternNode::Sequence;

std::size_t minimumLengthOf(const PatternNode& node) {
  if (node.optional || node.kind == Kind::Boundary) {
    return 0;
  }
  if (node.kind != Kind::Group) {
    return 1;
  }
  std::size_t shortest = SIZE_MAX;
  for (const Sequence& alternative : node.alternatives) {
    shortest = std::min(shortest, minimumLengthOf(alternative));
  }
  return shortest;
}

bool repeatsByte(const Sequence& sequence, unsigned char byte) {
  return std::any_of(sequence.begin(), sequence.end(), [byte](const PatternNode& node) {
    return (node.repeated && node.set[byte]) ||
           std::any_of(node.alternatives.begin(), node.alternatives.end(),
                       [byte](const Sequence& inner) { return repeatsByte(inner, byte); });
  });
}

/// Whether each repetition of a group starts with a plain character that tells which alternative
/// this is and that no run inside the alternative takes. Then no repetition is empty, and the runs
/// of one repetition end before the next one starts.
bool startsItsRepetitions(const PatternNode& group) {
  ByteSet starts;
  for (const Sequence& alternative : group.alternatives) {
    if (alternative.empty() || !isPlainCharacter(alternative.front())) {
      return false;
    }
    const auto start = static_cast<unsigned char>(alternative.front().character);
    if (starts[start] || repeatsByte(alternative, start)) {
      return false;
    }
    starts.set(start);
  }
  return true;
}

class MatchabilityCheck {
 public:
  explicit MatchabilityCheck(bool dotMatchesAll) : m_dotMatchesAll(dotMatchesAll) {}

  bool isMatchable(const Sequence& sequence, bool isOutermost) const {
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      const PatternNode& node = sequence[i];
      const bool matchable = node.kind == Kind::Any ? node.optional && node.repeated &&
                                                          canFollowAny(sequence, i + 1, isOutermost)
                                                    : isMatchable(node);
      if (!matchable) {
        return false;
      }
    }
    return true;
  }

 private:
  bool isMatchable(const PatternNode& node) const {
    switch (node.kind) {
      case Kind::Space:
      case Kind::Boundary:
        return node.isPlain();
      case Kind::Group: {
        const bool supported =
            !node.lazy && (!node.repeated || (node.optional && startsItsRepetitions(node)));
        return supported && std::all_of(node.alternatives.begin(), node.alternatives.end(),
                                        [this](const Sequence& alternative) {
                                          return isMatchable(alternative, false);
                                        });
      }
      default:
        return true;
    }
  }

  /// Whether what follows a ".*" can match only where ICU's ".*" may end, although the matcher
  /// tries every byte: it must begin with an ASCII byte, or be the end of the expression. A "."
  /// that matches line ends takes CR LF as one character, so LF must not be that byte.
  bool canFollowAny(const Sequence& sequence, std::size_t index, bool isOutermost) const {
    for (; index < sequence.size(); ++index) {
      const PatternNode& node = sequence[index];
      const bool startsWithAscii = node.kind == Kind::Character || node.kind == Kind::Set;
      if (!startsWithAscii || (m_dotMatchesAll && node.set['\n'])) {
        return false;
      }
      if (!node.optional) {
        return true;
      }
    }
    return isOutermost;
  }

  bool m_dotMatchesAll;
};

/// The longest literal that every match contains; may be empty.
std::string requiredLiteralOf(const Sequence& sequence) {
  std::string longest;
  std::string current;
  for (const PatternNode& node : sequence) {
    if (isPlainCharacter(node)) {
      current += node.character;
    } else {
      current.clear();
    }
    if (current.size() > longest.size()) {
      longest = current;
    }
  }
  return longest;
}

std::string firstBytePairOf(const ByteSet& firstBytes) {
  std::string pair;
  for (std::size_t byte = 0; firstBytes.count() <= 2 && byte < firstBytes.size(); ++byte) {
    if (firstBytes[byte]) {
      pair += static_cast<char>(byte);
    }
  }
  return pair;
}

/// Looks for a literal behind at most one run and any number of single bytes. A single byte is no
/// anchor: the set of first bytes finds it as well.
void findAnchor(const std::vector<PatternStep>& steps, std::size_t start, SearchHints& hints) {
  using StepKind = PatternStep::Kind;
  const PatternStep* step = &steps[start];
  std::size_t offset = 0;
  bool hasLeadingRun = false;
  if (step->kind == StepKind::Repeat && !step->lazy && !step->set.all()) {
    const ByteSet& run = step->set;
    step = &steps[step->next];
    hasLeadingRun =
        step->kind == StepKind::Literal && !run[static_cast<unsigned char>(step->literal.front())];
    if (!hasLeadingRun) {
      return;
    }
  }
  while (step->kind == StepKind::Boundary || step->kind == StepKind::Set) {
    offset += step->kind == StepKind::Set ? 1 : 0;
    step = &steps[step->next];
  }
  if (step->kind == StepKind::Literal && step->literal.size() > 1) {
    hints.anchor = step->literal;
    hints.anchorOffset = offset;
    hints.anchorFollowers = steps[step->next].firstBytes;
    hints.hasLeadingRun = hasLeadingRun;
  }
}

}  // namespace

std::size_t minimumLengthOf(const Sequence& sequence) {
  std::size_t length = 0;
  for (const PatternNode& node : sequence) {
    length += minimumLengthOf(node);
  }
  return length;
}

bool isMatchableOnBytes(const Sequence& sequence, bool dotMatchesAll) {
  return MatchabilityCheck(dotMatchesAll).isMatchable(sequence, true);
}

SearchHints searchHintsOf(const Sequence& sequence, const std::vector<PatternStep>& steps,
                          std::size_t start) {
  SearchHints hints;
  hints.requiredLiteral = requiredLiteralOf(sequence);
  hints.firstBytePair = firstBytePairOf(steps[start].firstBytes);
  findAnchor(steps, start, hints);
  return hints;
}

}  // namespace orvdiff::pattern

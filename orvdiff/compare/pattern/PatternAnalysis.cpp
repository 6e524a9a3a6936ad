#include "orvdiff/compare/pattern/PatternAnalysis.h"

#include <algorithm>
#include <cstdint>

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
/// this is and that no run inside swallows. No repetition is empty then.
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

  /// Whether what follows a ".*" can match only where ICU's ".*" may end, although every byte is
  /// tried: it must begin with an ASCII byte, or be the end of everything. A "." that matches line
  /// ends takes CR LF as one character, so LF must not be that byte.
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

#include "orvdiff/compare/pattern/PatternCompiler.h"

#include <utility>
#include <vector>

#include "orvdiff/compare/pattern/PatternAnalysis.h"
#include "orvdiff/compare/pattern/PatternParser.h"

namespace orvdiff::pattern {
namespace {

using Kind = PatternNode::Kind;
using Sequence = PatternNode::Sequence;

/// Turns a parsed expression into steps, from its end to its start: a step's first bytes follow
/// from those of the steps after it.
class PatternCompiler {
 public:
  explicit PatternCompiler(bool dotMatchesAll) : m_dotMatchesAll(dotMatchesAll) {}

  std::unique_ptr<PatternProgram> compile(const Sequence& sequence) {
    const std::size_t start = emitSequence(sequence, emit(PatternStep()));
    SearchHints hints = searchHintsOf(sequence, m_steps, start);
    return std::make_unique<PatternProgram>(std::move(m_steps), start, minimumLengthOf(sequence),
                                            std::move(hints));
  }

 private:
  /// Adds a step. The steps that it refers to must exist already.
  std::size_t emit(PatternStep step) {
    step.firstBytes = firstBytesOf(step);
    m_steps.push_back(std::move(step));
    return m_steps.size() - 1;
  }

  std::size_t emitSequence(const Sequence& sequence, std::size_t next) {
    std::size_t end = sequence.size();
    while (end > 0) {
      std::size_t begin = end;
      while (begin > 0 && isPlainCharacter(sequence[begin - 1])) {
        --begin;
      }
      if (begin < end) {
        PatternStep step;
        step.kind = PatternStep::Kind::Literal;
        for (std::size_t i = begin; i < end; ++i) {
          step.literal += sequence[i].character;
        }
        step.next = next;
        next = emit(std::move(step));
      } else {
        begin = end - 1;
        next = emitNode(sequence[begin], next);
      }
      end = begin;
    }
    return next;
  }

  std::size_t emitNode(const PatternNode& node, std::size_t next) {
    if (node.kind == Kind::Group) {
      return emitGroup(node, next);
    }
    PatternStep step;
    step.next = next;
    step.set = node.set;
    if (node.kind == Kind::Space || node.kind == Kind::Boundary) {
      step.kind = node.kind == Kind::Space ? PatternStep::Kind::Space : PatternStep::Kind::Boundary;
      return emit(std::move(step));
    }
    if (node.repeated) {
      step.kind = PatternStep::Kind::Repeat;
      step.minimum = node.optional ? 0 : 1;
      step.lazy = node.lazy;
      step.stopsAtLineEnd = node.kind == Kind::Any && !m_dotMatchesAll;
      step.skippable = skippableBytes(step);
      return emit(std::move(step));
    }
    step.kind = PatternStep::Kind::Set;
    const std::size_t once = emit(std::move(step));
    return node.optional ? emitBranch({once, next}) : once;
  }

  ByteSet skippableBytes(const PatternStep& repeat) const {
    ByteSet bytes = repeat.set;
    const PatternStep& next = m_steps[repeat.next];
    if (next.kind == PatternStep::Kind::Literal) {
      bytes.reset(static_cast<unsigned char>(next.literal.front()));
    }
    if (repeat.stopsAtLineEnd) {
      for (const std::size_t lead : {0x0AU, 0x0BU, 0x0CU, 0x0DU, 0xC2U, 0xE2U}) {
        bytes.reset(lead);
      }
    }
    return bytes;
  }

  std::size_t emitGroup(const PatternNode& group, std::size_t next) {
    if (group.repeated) {
      return emitLoop(group, next);
    }
    std::vector<std::size_t> choices;
    for (const Sequence& alternative : group.alternatives) {
      choices.push_back(emitSequence(alternative, next));
    }
    if (group.optional) {
      choices.push_back(next);
    }
    return choices.size() == 1 ? choices.front() : emitBranch(std::move(choices));
  }

  /// A branch that the end of each alternative leads back to. The alternatives need the branch's
  /// first bytes and the branch the alternatives' steps, but every alternative starts with a plain
  /// character, so the first bytes are known beforehand.
  std::size_t emitLoop(const PatternNode& group, std::size_t next) {
    const std::size_t branch = emitBranch({next});
    ByteSet firstBytes = m_steps[branch].firstBytes;
    for (const Sequence& alternative : group.alternatives) {
      firstBytes |= alternative.front().set;
    }
    m_steps[branch].firstBytes = firstBytes;
    std::vector<std::size_t> choices;
    for (const Sequence& alternative : group.alternatives) {
      choices.push_back(emitSequence(alternative, branch));
    }
    choices.push_back(next);
    m_steps[branch].choices = std::move(choices);
    m_steps[branch].isLoop = true;
    return branch;
  }

  std::size_t emitBranch(std::vector<std::size_t> choices) {
    PatternStep step;
    step.kind = PatternStep::Kind::Branch;
    step.choices = std::move(choices);
    return emit(std::move(step));
  }

  ByteSet firstBytesOf(const PatternStep& step) const {
    ByteSet bytes = step.set;
    switch (step.kind) {
      case PatternStep::Kind::Literal:
        bytes.set(static_cast<unsigned char>(step.literal.front()));
        break;
      case PatternStep::Kind::Set:
        break;
      case PatternStep::Kind::Boundary:
        bytes = m_steps[step.next].firstBytes;
        break;
      case PatternStep::Kind::Repeat:
        if (step.minimum == 0) {
          bytes |= m_steps[step.next].firstBytes;
        }
        break;
      case PatternStep::Kind::Branch:
        for (const std::size_t choice : step.choices) {
          bytes |= m_steps[choice].firstBytes;
        }
        break;
      case PatternStep::Kind::Space:
      case PatternStep::Kind::Accept:
        bytes.set();
        break;
    }
    return bytes;
  }

  std::vector<PatternStep> m_steps;
  bool m_dotMatchesAll;
};

}  // namespace

std::unique_ptr<PatternProgram> compilePattern(std::string_view expression) {
  PatternParser parser(expression);
  Sequence sequence;
  if (!parser.parse(sequence) || !isMatchableOnBytes(sequence, parser.dotMatchesAll()) ||
      minimumLengthOf(sequence) == 0) {
    return nullptr;
  }
  return PatternCompiler(parser.dotMatchesAll()).compile(sequence);
}

}  // namespace orvdiff::pattern

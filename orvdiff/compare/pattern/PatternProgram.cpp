#include "orvdiff/compare/pattern/PatternProgram.h"

#include <utility>

#include "orvdiff/compare/pattern/PatternAnalysis.h"
#include "orvdiff/compare/pattern/PatternParser.h"

namespace {

using Kind = PatternNode::Kind;
using Sequence = PatternNode::Sequence;

}  // namespace

/// Turns a parsed expression into steps, from its end to its start, so that every step knows the
/// one after it.
class PatternCompiler {
 public:
  PatternCompiler(PatternProgram& program, bool dotMatchesAll)
      : m_program(program), m_dotMatchesAll(dotMatchesAll) {}

  void compile(const Sequence& sequence) {
    m_program.m_minimumLength = minimumLengthOf(sequence);
    m_program.m_start = emitSequence(sequence, emit(PatternStep()));
    findFewFirstBytes();
    findRequiredLiteral(sequence);
    findAnchor();
  }

 private:
  /// Adds a step; those that it refers to are there already.
  std::size_t emit(PatternStep step) {
    step.firstBytes = firstBytesOf(step);
    m_program.m_steps.push_back(std::move(step));
    return m_program.m_steps.size() - 1;
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
    const PatternStep& next = m_program.m_steps[repeat.next];
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

  /// A branch that the end of each alternative leads back to. Every alternative starts with a plain
  /// character, so the branch's first bytes are known before the alternatives are.
  std::size_t emitLoop(const PatternNode& group, std::size_t next) {
    const std::size_t branch = emitBranch({next});
    ByteSet firstBytes = m_program.m_steps[branch].firstBytes;
    for (const Sequence& alternative : group.alternatives) {
      firstBytes |= alternative.front().set;
    }
    m_program.m_steps[branch].firstBytes = firstBytes;
    std::vector<std::size_t> choices;
    for (const Sequence& alternative : group.alternatives) {
      choices.push_back(emitSequence(alternative, branch));
    }
    choices.push_back(next);
    m_program.m_steps[branch].choices = std::move(choices);
    m_program.m_steps[branch].isLoop = true;
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
        bytes = m_program.m_steps[step.next].firstBytes;
        break;
      case PatternStep::Kind::Repeat:
        if (step.minimum == 0) {
          bytes |= m_program.m_steps[step.next].firstBytes;
        }
        break;
      case PatternStep::Kind::Branch:
        for (const std::size_t choice : step.choices) {
          bytes |= m_program.m_steps[choice].firstBytes;
        }
        break;
      case PatternStep::Kind::Space:
      case PatternStep::Kind::Accept:
        bytes.set();
        break;
    }
    return bytes;
  }

  void findFewFirstBytes() {
    const ByteSet& bytes = m_program.firstBytes();
    for (std::size_t byte = 0; bytes.count() <= 2 && byte < bytes.size(); ++byte) {
      if (bytes[byte]) {
        m_program.m_fewFirstBytes += static_cast<char>(byte);
      }
    }
  }

  void findRequiredLiteral(const Sequence& sequence) {
    std::string current;
    for (const PatternNode& node : sequence) {
      if (isPlainCharacter(node)) {
        current += node.character;
      } else {
        current.clear();
      }
      if (current.size() > m_program.m_requiredLiteral.size()) {
        m_program.m_requiredLiteral = current;
      }
    }
  }

  void findAnchor() {
    const PatternStep* step = &m_program.m_steps[m_program.m_start];
    std::size_t offset = 0;
    bool leadingRun = false;
    if (step->kind == PatternStep::Kind::Repeat && !step->lazy && !step->set.all()) {
      const ByteSet& run = step->set;
      step = &m_program.m_steps[step->next];
      leadingRun = step->kind == PatternStep::Kind::Literal &&
                   !run[static_cast<unsigned char>(step->literal.front())];
      if (!leadingRun) {
        return;
      }
    }
    while (step->kind == PatternStep::Kind::Boundary || step->kind == PatternStep::Kind::Set) {
      offset += step->kind == PatternStep::Kind::Set ? 1 : 0;
      step = &m_program.m_steps[step->next];
    }
    if (step->kind == PatternStep::Kind::Literal && step->literal.size() > 1) {
      m_program.m_anchor = step->literal;
      m_program.m_anchorOffset = offset;
      m_program.m_anchorFollowers = m_program.m_steps[step->next].firstBytes;
      m_program.m_hasLeadingRun = leadingRun;
    }
  }

  PatternProgram& m_program;
  bool m_dotMatchesAll;
};

std::unique_ptr<PatternProgram> PatternProgram::compile(std::string_view expression) {
  PatternParser parser(expression);
  Sequence sequence;
  if (!parser.parse(sequence) || !isMatchableOnBytes(sequence, parser.dotMatchesAll()) ||
      minimumLengthOf(sequence) == 0) {
    return nullptr;
  }
  auto program = std::make_unique<PatternProgram>();
  PatternCompiler(*program, parser.dotMatchesAll()).compile(sequence);
  return program;
}

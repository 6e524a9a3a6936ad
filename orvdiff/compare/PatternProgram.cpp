#include "orvdiff/compare/PatternProgram.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "orvdiff/compare/PatternParser.h"

namespace {

using Kind = PatternNode::Kind;
using Sequence = PatternNode::Sequence;

bool isPlainCharacter(const PatternNode& node) {
  return node.kind == Kind::Character && node.isPlain();
}

std::size_t minimumLengthOf(const Sequence& sequence);

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

std::size_t minimumLengthOf(const Sequence& sequence) {
  std::size_t length = 0;
  for (const PatternNode& node : sequence) {
    length += minimumLengthOf(node);
  }
  return length;
}

bool repeatsByte(const Sequence& sequence, unsigned char byte) {
  return std::any_of(sequence.begin(), sequence.end(), [byte](const PatternNode& node) {
    return (node.repeated && node.set[byte]) ||
           std::any_of(node.alternatives.begin(), node.alternatives.end(),
                       [byte](const Sequence& inner) { return repeatsByte(inner, byte); });
  });
}

/// Whether a repeated group can divide a text in one way only, so that giving repetitions back one
/// by one is all the searching there is: each repetition starts with a character that no run inside
/// it swallows.
bool dividesInOneWay(const PatternNode& group) {
  return std::all_of(
      group.alternatives.begin(), group.alternatives.end(), [](const Sequence& sequence) {
        return !sequence.empty() && isPlainCharacter(sequence.front()) &&
               !repeatsByte(sequence, static_cast<unsigned char>(sequence.front().character));
      });
}

/// Whether what follows a ".*" can only match at the start of a character, although the bytes of a
/// character are tried one by one: it must begin with an ASCII byte, or be the end of everything.
bool canFollowAny(const Sequence& sequence, std::size_t index, bool isOutermost) {
  for (; index < sequence.size(); ++index) {
    const PatternNode& node = sequence[index];
    if (node.kind != Kind::Character && node.kind != Kind::Set) {
      return false;
    }
    if (!node.optional) {
      return true;
    }
  }
  return isOutermost;
}

bool isSupported(const Sequence& sequence, bool isOutermost) {
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    const PatternNode& node = sequence[i];
    switch (node.kind) {
      case Kind::Character:
      case Kind::Set:
        break;
      case Kind::Any:
        if (!node.optional || !node.repeated || !canFollowAny(sequence, i + 1, isOutermost)) {
          return false;
        }
        break;
      case Kind::Space:
      case Kind::Boundary:
        if (!node.isPlain()) {
          return false;
        }
        break;
      case Kind::Group:
        if (node.lazy || (node.repeated && (!node.optional || !dividesInOneWay(node)))) {
          return false;
        }
        for (const Sequence& alternative : node.alternatives) {
          if (!isSupported(alternative, false)) {
            return false;
          }
        }
    }
  }
  return true;
}

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
    findFirstBytes();
    findRequiredLiteral(sequence);
    findAnchor();
  }

 private:
  std::size_t emit(PatternStep step) {
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
    const std::size_t branch = emitBranch({});
    const std::size_t afterOne = group.repeated ? branch : next;
    std::vector<std::size_t> choices;
    for (const Sequence& alternative : group.alternatives) {
      choices.push_back(emitSequence(alternative, afterOne));
    }
    if (group.optional) {
      choices.push_back(next);
    }
    m_program.m_steps[branch].choices = std::move(choices);
    return branch;
  }

  std::size_t emitBranch(std::vector<std::size_t> choices) {
    PatternStep step;
    step.kind = PatternStep::Kind::Branch;
    step.choices = std::move(choices);
    return emit(std::move(step));
  }

  ByteSet firstBytesOf(std::size_t index) const {
    const PatternStep& step = m_program.m_steps[index];
    ByteSet bytes;
    switch (step.kind) {
      case PatternStep::Kind::Literal:
        bytes.set(static_cast<unsigned char>(step.literal.front()));
        break;
      case PatternStep::Kind::Set:
        bytes = step.set;
        break;
      case PatternStep::Kind::Boundary:
        bytes = firstBytesOf(step.next);
        break;
      case PatternStep::Kind::Repeat:
        bytes = step.set;
        if (step.minimum == 0) {
          bytes |= firstBytesOf(step.next);
        }
        break;
      case PatternStep::Kind::Branch:
        for (const std::size_t choice : step.choices) {
          bytes |= firstBytesOf(choice);
        }
        break;
      case PatternStep::Kind::Space:
      case PatternStep::Kind::Accept:
        bytes.set();
        break;
    }
    return bytes;
  }

  void findFirstBytes() {
    const ByteSet bytes = firstBytesOf(m_program.m_start);
    m_program.m_firstBytes = bytes;
    for (char byte = 0; bytes.count() <= 2 && byte >= 0 && byte < 127; ++byte) {
      if (bytes[static_cast<std::size_t>(byte)]) {
        m_program.m_fewFirstBytes += byte;
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
      m_program.m_anchorFollowers = firstBytesOf(step->next);
      m_program.m_hasLeadingRun = leadingRun;
    }
  }

  PatternProgram& m_program;
  bool m_dotMatchesAll;
};

std::unique_ptr<PatternProgram> PatternProgram::compile(std::string_view expression) {
  PatternParser parser(expression);
  Sequence sequence;
  if (!parser.parse(sequence) || !isSupported(sequence, true) || minimumLengthOf(sequence) == 0) {
    return nullptr;
  }
  auto program = std::make_unique<PatternProgram>();
  PatternCompiler(*program, parser.dotMatchesAll()).compile(sequence);
  return program;
}

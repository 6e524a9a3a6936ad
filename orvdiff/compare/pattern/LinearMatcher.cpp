// Why the search is linear in the text
//
// A backtracking search is slow because it tries the same step at the same position again and
// again. This one records what has failed. The record is never wrong: an expression of the subset
// has no back references and no look-around, so whether the rest of the expression matches after a
// given step depends on the position alone, not on where the match started, nor on how the search
// got there. What failed for one start therefore fails for all later starts, and stays failed for
// the whole text. (When a match is found, choices still open on the stack have not failed and are
// dropped unrecorded. A later search starts at or after the end of that match. Lazy repetitions
// have tried only positions before it; a greedy one may try again what lies after it, once, because
// nothing there matched.)
//
// Branches keep one bit per position, so each is exhausted at most once at each position. A branch
// whose last choice is taken at once leaves nothing to backtrack to and needs no bit, unless it is
// a loop: the steps repeated without it are bounded by the length of the expression.
//
// Repetitions keep only the stretch that failed last, not every stretch. Within one run (a longest
// sequence of repeated bytes) the stretch always reaches the run's end, and entering the repetition
// before the stretch tries only the positions up to it. So a run is passed over once, unless the
// repetition has meanwhile failed in another run, which replaces the stretch, and then comes back.
// That cannot happen often:
//
// - Without loops. To get from one side of a run's border to the other, a match either takes the
//   bytes at the border one by one, which only the few starts near the border can do, or has an
//   earlier repetition run across it. The runs of that repetition are disjoint: one of them crosses
//   the border, and tries the positions beyond it once, unless its own stretch is replaced. By
//   induction along the expression, a run is passed over a number of times that depends on the
//   expression only.
// - In a loop. A loop is a branch, so its body is entered at most once at each position. The body
//   starts with a byte that none of its repetitions takes, so their runs end where that byte occurs
//   next, and the runs of different rounds overlap no more often than the body has other elements.
//
// This is an argument, not a formal proof; it is weakest for loops in loops, where a repetition may
// follow an inner loop of any length. No expression is known that breaks the bound, and the tests
// look for one among random expressions. The constant depends on the expression: for the
// catalogue's patterns it is about a dozen steps per byte of the worst texts known.

#include "orvdiff/compare/pattern/LinearMatcher.h"

#include <algorithm>

#include "orvdiff/compare/pattern/FindLiteral.h"
#include "orvdiff/compare/pattern/TextCharacters.h"

namespace orvdiff::pattern {

#ifdef ORVDIFF_COUNT_MATCHER_STEPS
std::size_t matcherSteps = 0;
#endif

namespace {

using Kind = PatternStep::Kind;

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kWordBits = 64;

void countSteps([[maybe_unused]] std::size_t count) {
#ifdef ORVDIFF_COUNT_MATCHER_STEPS
  matcherSteps += count;
#endif
}

}  // namespace

LinearMatcher::LinearMatcher(const PatternProgram& program, std::string_view text)
    : m_program(program),
      m_text(text),
      m_dead(program.stepCount()),
      m_failed(program.stepCount()) {}

bool LinearMatcher::find(std::size_t from, Match& match) {
  if (!mayMatch(from)) {
    return false;
  }
  std::size_t position = from;
  std::size_t start = 0;
  while (nextStart(from, position, start)) {
    const std::size_t end = matchAt(start);
    if (end != kNone) {
      match = {start, end};
      return true;
    }
    ++position;
  }
  return false;
}

/// Whether the literal that every match contains occurs at or after `from`. Not needed if there is
/// an anchor: the search for that comes to the same.
bool LinearMatcher::mayMatch(std::size_t from) const {
  const SearchHints& hints = m_program.hints();
  if (!hints.anchor.empty() || hints.requiredLiteral.empty()) {
    return true;
  }
  const std::size_t found = findLiteral(m_text, hints.requiredLiteral, from);
  countSteps(std::min(found, m_text.size()) - from);
  return found != kNone;
}

/// Moves `position` to the next place, at or after it, where the hints allow a match, and sets
/// `start` to where that match starts: before `position` if it has a leading run, but not before
/// `from`.
bool LinearMatcher::nextStart(std::size_t from, std::size_t& position, std::size_t& start) const {
  if (m_program.hints().anchor.empty()) {
    start = findFirstByte(position);
    countSteps(std::min(start, m_text.size()) - position);
    position = start;
    return position != kNone;
  }
  const std::size_t offset = m_program.hints().anchorOffset;
  const std::size_t found = findAnchor(position + offset);
  countSteps(std::min(found, m_text.size()) - std::min(position, m_text.size()));
  if (found == kNone) {
    return false;
  }
  position = found - offset;
  start = position;
  if (const PatternStep* const run = m_program.leadingRun()) {
    while (start > from && run->set[byteAt(m_text, start - 1)]) {
      --start;
    }
    countSteps(position - start);
  }
  return true;
}

std::size_t LinearMatcher::findFirstByte(std::size_t from) const {
  const std::string& pair = m_program.hints().firstBytePair;
  if (!pair.empty()) {
    return findEither(m_text, pair.front(), pair.back(), from);
  }
  const ByteSet& firstBytes = m_program.step(m_program.start()).firstBytes;
  while (from < m_text.size() &&
         (!firstBytes[byteAt(m_text, from)] || isInsideLineEnd(m_text, from))) {
    ++from;
  }
  return from < m_text.size() ? from : kNone;
}

std::size_t LinearMatcher::findAnchor(std::size_t from) const {
  const std::string& anchor = m_program.hints().anchor;
  const ByteSet& followers = m_program.hints().anchorFollowers;
  std::size_t found = findLiteral(m_text, anchor, from);
  while (found != kNone && !followers.all()) {
    const std::size_t next = found + anchor.size();
    if (next < m_text.size() && followers[byteAt(m_text, next)]) {
      break;
    }
    found = findLiteral(m_text, anchor, found + 1);
  }
  return found;
}

/// Where the match that starts at `start` ends, or kNone.
std::size_t LinearMatcher::matchAt(std::size_t start) {
  m_frames.clear();
  std::size_t index = m_program.start();
  std::size_t position = start;
  while (m_program.step(index).kind != Kind::Accept) {
    if (!enter(index, position) && !resume(index, position)) {
      return kNone;
    }
  }
  return position;
}

/// Matches the step `index` at `position` and advances both, or fails.
bool LinearMatcher::enter(std::size_t& index, std::size_t& position) {
  countSteps(1);
  const PatternStep& step = m_program.step(index);
  if (step.kind == Kind::Branch) {
    return enterBranch(index, position);
  }
  bool matched = false;
  if (step.kind == Kind::Repeat) {
    matched = step.lazy ? enterLazy(index, position) : enterGreedy(index, position);
  } else {
    matched = advance(step, position);
  }
  index = step.next;
  return matched;
}

/// Takes the first choice that the next byte allows. The last choice of a branch is not worth a
/// frame, except in a loop, whose body leads back here: that a body is entered at most once at each
/// position is what the argument above rests on. (No expression is known that would take more than
/// a constant longer without it.)
bool LinearMatcher::enterBranch(std::size_t& index, std::size_t position) {
  const PatternStep& step = m_program.step(index);
  const std::size_t choice = nextChoice(step, position, 0);
  if (choice == step.choices.size()) {
    return false;
  }
  if (choice + 1 < step.choices.size() || step.isLoop) {
    if (hasFailed(index, position)) {
      return false;
    }
    m_frames.push_back({index, position, choice + 1, 0});
  }
  index = step.choices[choice];
  return true;
}

bool LinearMatcher::hasFailed(std::size_t branch, std::size_t position) const {
  const std::vector<std::uint64_t>& failed = m_failed[branch];
  return !failed.empty() && (failed[position / kWordBits] >> (position % kWordBits) & 1) != 0;
}

/// The first choice of a branch, not before `choice`, that can match at `position`.
std::size_t LinearMatcher::nextChoice(const PatternStep& step, std::size_t position,
                                      std::size_t choice) const {
  for (; choice < step.choices.size(); ++choice) {
    const ByteSet& firstBytes = m_program.step(step.choices[choice]).firstBytes;
    if (position < m_text.size() ? firstBytes[byteAt(m_text, position)] : firstBytes.all()) {
      break;
    }
  }
  return choice;
}

void LinearMatcher::recordFailure(const Frame& branch) {
  std::vector<std::uint64_t>& failed = m_failed[branch.step];
  if (failed.empty()) {
    failed.resize(m_text.size() / kWordBits + 1);
  }
  failed[branch.position / kWordBits] |= std::uint64_t{1} << (branch.position % kWordBits);
}

/// Matches a step that offers no choice.
bool LinearMatcher::advance(const PatternStep& step, std::size_t& position) const {
  switch (step.kind) {
    case Kind::Literal:
      if (!startsWith(m_text, position, step.literal)) {
        return false;
      }
      position += step.literal.size();
      return true;
    case Kind::Set:
      return position < m_text.size() && step.set[byteAt(m_text, position++)];
    case Kind::Space: {
      const std::size_t length = whiteSpaceLength(m_text, position);
      position += length;
      return length != 0;
    }
    default:
      return isWordBoundary(m_text, position);
  }
}

bool LinearMatcher::enterGreedy(std::size_t index, std::size_t& position) {
  const PatternStep& step = m_program.step(index);
  const DeadStretch& dead = m_dead[index];
  const std::size_t lowest = position + step.minimum;
  if (dead.contains(lowest)) {
    return false;
  }
  const bool deadAhead = dead.first <= dead.last && lowest < dead.first;
  const std::size_t scanned = runEnd(step, position, deadAhead ? dead.first : m_text.size());
  const bool reachesDead = deadAhead && scanned == dead.first;
  const std::size_t top = reachesDead ? dead.first - 1 : scanned;
  if (top < lowest) {
    return false;
  }
  m_frames.push_back({index, top, lowest, reachesDead ? dead.last : scanned});
  position = top;
  return true;
}

bool LinearMatcher::enterLazy(std::size_t index, std::size_t& position) {
  const DeadStretch& dead = m_dead[index];
  if (dead.contains(position)) {
    return false;
  }
  Frame frame{index, position, position, 0};
  if (!findLazyEnd(frame)) {
    return false;
  }
  m_frames.push_back(frame);
  position = frame.position;
  return true;
}

/// Backtracks to the latest choice that is not exhausted; false if there is none.
bool LinearMatcher::resume(std::size_t& index, std::size_t& position) {
  while (!m_frames.empty()) {
    countSteps(1);
    Frame& frame = m_frames.back();
    const PatternStep& step = m_program.step(frame.step);
    if (step.kind == Kind::Branch) {
      const std::size_t choice = nextChoice(step, frame.position, frame.limit);
      if (choice < step.choices.size()) {
        frame.limit = choice + 1;
        position = frame.position;
        index = step.choices[choice];
        return true;
      }
      recordFailure(frame);
    } else if (step.lazy ? lengthenLazy(frame) : shortenGreedy(frame)) {
      position = frame.position;
      index = step.next;
      return true;
    }
    m_frames.pop_back();
  }
  return false;
}

bool LinearMatcher::shortenGreedy(Frame& frame) {
  if (frame.position > frame.limit) {
    --frame.position;
    return true;
  }
  m_dead[frame.step] = {frame.limit, frame.runEnd};
  return false;
}

bool LinearMatcher::lengthenLazy(Frame& frame) {
  DeadStretch& dead = m_dead[frame.step];
  if (frame.position < m_text.size() && isInRun(m_program.step(frame.step), frame.position)) {
    ++frame.position;
    if (!dead.contains(frame.position)) {
      return findLazyEnd(frame);
    }
    dead.first = frame.limit;
    return false;
  }
  dead = {frame.limit, frame.position};
  return false;
}

/// Moves the end of a lazy repetition forward, from where it is, to the next place where the
/// literal after it occurs. If there is none in the run, all of the run is dead.
bool LinearMatcher::findLazyEnd(Frame& frame) {
  const PatternStep& step = m_program.step(frame.step);
  const PatternStep& next = m_program.step(step.next);
  if (next.kind != Kind::Literal) {
    return true;
  }
  DeadStretch& dead = m_dead[frame.step];
  const bool deadAhead = dead.first <= dead.last && frame.position <= dead.first;
  const std::size_t limit = deadAhead ? dead.first : m_text.size();
  std::size_t position = frame.position;
  for (;;) {
    while (position < limit && step.skippable[byteAt(m_text, position)]) {
      ++position;
    }
    if (position < limit && startsWith(m_text, position, next.literal)) {
      countSteps(position - frame.position);
      frame.position = position;
      return true;
    }
    if (position >= limit || !isInRun(step, position)) {
      break;
    }
    ++position;
  }
  countSteps(position - frame.position);
  dead = {frame.limit, deadAhead && position == limit ? dead.last : position};
  return false;
}

/// Where the run of `step` from `position` ends, looking no further than `limit`.
std::size_t LinearMatcher::runEnd(const PatternStep& step, std::size_t position,
                                  std::size_t limit) const {
  std::size_t end = position;
  while (end < limit && isInRun(step, end)) {
    ++end;
  }
  countSteps(end - position);
  return end;
}

bool LinearMatcher::isInRun(const PatternStep& step, std::size_t position) const {
  return step.set[byteAt(m_text, position)] &&
         !(step.stopsAtLineEnd && isLineEnd(m_text, position));
}

}  // namespace orvdiff::pattern

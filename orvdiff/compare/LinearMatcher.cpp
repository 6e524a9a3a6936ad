#include "orvdiff/compare/LinearMatcher.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

#include "orvdiff/compare/FindLiteral.h"

namespace {

using Kind = PatternStep::Kind;

constexpr std::size_t kNone = std::string_view::npos;

unsigned char byteAt(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

/// A character that word boundaries look through: it belongs to the one before it.
bool isCombining(UChar32 c) {
  return u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND) || u_charType(c) == U_FORMAT_CHAR;
}

bool isWordCharacter(UChar32 c) {
  return u_hasBinaryProperty(c, UCHAR_ALPHABETIC) ||
         (U_GET_GC_MASK(c) & (U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK)) != 0;
}

/// The character at `position`, which moves behind it; negative when the bytes are no valid UTF-8.
UChar32 characterAt(std::string_view text, std::size_t& position) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  UChar32 character = 0;
  U8_NEXT(bytes, position, text.size(), character);
  return character;
}

UChar32 characterBefore(std::string_view text, std::size_t& position) {
  const auto window = static_cast<std::int32_t>(std::min<std::size_t>(position, U8_MAX_LENGTH));
  const char* const begin = text.data() + position - window;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(begin);
  std::int32_t index = window;
  UChar32 character = 0;
  U8_PREV(bytes, 0, index, character);
  position -= static_cast<std::size_t>(window - index);
  return character;
}

}  // namespace

LinearMatcher::LinearMatcher(const PatternProgram& program, std::string_view text)
    : m_program(program), m_text(text), m_dead(program.stepCount()) {}

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

/// Whether the literal that every match contains occurs at or after `from`. Where a match starts
/// with an anchor, looking for that says as much.
bool LinearMatcher::mayMatch(std::size_t from) {
  const std::string& required = m_program.requiredLiteral();
  if (!m_program.anchor().empty() || required.empty()) {
    return true;
  }
  if (!m_requiredIsKnown || (m_required != kNone && m_required < from)) {
    m_required = findLiteral(m_text, required, from);
    m_requiredIsKnown = true;
  }
  return m_required != kNone;
}

/// Moves `position` to the next place at or after it where a match may announce itself and sets the
/// `start` that such a match has, not before `from`.
bool LinearMatcher::nextStart(std::size_t from, std::size_t& position, std::size_t& start) const {
  if (m_program.anchor().empty()) {
    position = findFirstByte(position);
    start = position;
    return position != kNone;
  }
  const std::size_t offset = m_program.anchorOffset();
  const std::size_t found = findAnchor(position + offset);
  if (found == kNone) {
    return false;
  }
  position = found - offset;
  start = position;
  if (const PatternStep* const run = m_program.leadingRun()) {
    while (start > from && run->set[byteAt(m_text, start - 1)]) {
      --start;
    }
  }
  return true;
}

std::size_t LinearMatcher::findFirstByte(std::size_t from) const {
  const std::string& fewFirstBytes = m_program.fewFirstBytes();
  if (!fewFirstBytes.empty()) {
    return findEither(m_text, fewFirstBytes.front(), fewFirstBytes.back(), from);
  }
  const ByteSet& firstBytes = m_program.firstBytes();
  while (from < m_text.size() && (!firstBytes[byteAt(m_text, from)] || isInsideLineEnd(from))) {
    ++from;
  }
  return from < m_text.size() ? from : kNone;
}

std::size_t LinearMatcher::findAnchor(std::size_t from) const {
  const std::string& anchor = m_program.anchor();
  const ByteSet& followers = m_program.anchorFollowers();
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
  for (;;) {
    const PatternStep& step = m_program.step(index);
    bool matched = true;
    if (step.kind == Kind::Accept) {
      return position;
    }
    if (step.kind == Kind::Branch) {
      m_frames.push_back({index, position, 1, 0});
      index = step.choices.front();
      continue;
    }
    if (step.kind == Kind::Repeat) {
      matched = step.lazy ? enterLazy(index, position) : enterGreedy(index, position);
    } else {
      matched = advance(step, position);
    }
    if (matched) {
      index = step.next;
    } else if (!resume(index, position)) {
      return kNone;
    }
  }
}

/// Matches a step that leaves no choice.
bool LinearMatcher::advance(const PatternStep& step, std::size_t& position) const {
  switch (step.kind) {
    case Kind::Literal:
      if (!startsWith(step.literal, position)) {
        return false;
      }
      position += step.literal.size();
      return true;
    case Kind::Set:
      return position < m_text.size() && step.set[byteAt(m_text, position++)];
    case Kind::Space: {
      if (position >= m_text.size()) {
        return false;
      }
      const UChar32 character = characterAt(m_text, position);
      return character >= 0 && u_isUWhiteSpace(character) != 0;
    }
    default:
      return isWordBoundary(position);
  }
}

bool LinearMatcher::enterGreedy(std::size_t index, std::size_t& position) {
  const PatternStep& step = m_program.step(index);
  const DeadStretch& dead = m_dead[index];
  const std::size_t lowest = position + step.minimum;
  if (lowest >= dead.first && lowest <= dead.last) {
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
  if (position >= dead.first && position <= dead.last) {
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

/// Goes back to the last choice that is not used up; false when there is none.
bool LinearMatcher::resume(std::size_t& index, std::size_t& position) {
  while (!m_frames.empty()) {
    Frame& frame = m_frames.back();
    const PatternStep& step = m_program.step(frame.step);
    if (step.kind == Kind::Branch) {
      if (frame.limit < step.choices.size()) {
        position = frame.position;
        index = step.choices[frame.limit++];
        return true;
      }
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
  if (frame.position < m_text.size() && isInRun(m_program.step(frame.step), frame.position)) {
    ++frame.position;
    return findLazyEnd(frame);
  }
  m_dead[frame.step] = {frame.limit, frame.position};
  return false;
}

/// Moves the end of a lazy repetition forward, from where it is, to the next place from which the
/// rest may match. When there is none, the whole run is dead.
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
    if (position < limit && startsWith(next.literal, position)) {
      frame.position = position;
      return true;
    }
    if (position >= limit || !isInRun(step, position)) {
      break;
    }
    ++position;
  }
  dead = {frame.limit, deadAhead && position == limit ? dead.last : position};
  return false;
}

/// Where a run of `step` from `position` ends, looking no further than `limit`.
std::size_t LinearMatcher::runEnd(const PatternStep& step, std::size_t position,
                                  std::size_t limit) const {
  while (position < limit && isInRun(step, position)) {
    ++position;
  }
  return position;
}

bool LinearMatcher::isInRun(const PatternStep& step, std::size_t position) const {
  return step.set[byteAt(m_text, position)] && !(step.stopsAtLineEnd && isLineEnd(position));
}

/// Whether a line end starts at `position`: LF, VT, FF, CR, U+0085, U+2028 or U+2029.
bool LinearMatcher::isLineEnd(std::size_t position) const {
  const unsigned char byte = byteAt(m_text, position);
  if (byte < 0x80) {
    return byte >= '\n' && byte <= '\r';
  }
  return (byte == 0xC2 && startsWith("\xC2\x85", position)) ||
         (byte == 0xE2 &&
          (startsWith("\xE2\x80\xA8", position) || startsWith("\xE2\x80\xA9", position)));
}

/// Whether `position` is in the middle of a line end of several bytes. A "." would take the rest of
/// it for a character of its own.
bool LinearMatcher::isInsideLineEnd(std::size_t position) const {
  return byteAt(m_text, position) >= 0x80 &&
         ((position >= 1 && isLineEnd(position - 1) && byteAt(m_text, position - 1) >= 0x80) ||
          (position >= 2 && isLineEnd(position - 2) && byteAt(m_text, position - 2) == 0xE2));
}

bool LinearMatcher::startsWith(std::string_view literal, std::size_t position) const {
  return m_text.compare(position, literal.size(), literal) == 0;
}

bool LinearMatcher::isWordBoundary(std::size_t position) const {
  bool isWord = false;
  if (position < m_text.size()) {
    std::size_t next = position;
    const UChar32 character = characterAt(m_text, next);
    if (character >= 0 && isCombining(character)) {
      return false;
    }
    isWord = character >= 0 && isWordCharacter(character);
  }
  bool wasWord = false;
  while (position > 0) {
    const UChar32 character = characterBefore(m_text, position);
    if (character < 0 || !isCombining(character)) {
      wasWord = character >= 0 && isWordCharacter(character);
      break;
    }
  }
  return isWord != wasWord;
}

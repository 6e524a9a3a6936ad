#include "cli/diff/TextHunks.h"

#include <algorithm>
#include <utility>

namespace {

// Where an edit adds or removes a line break, extending one file's stretch to a whole line may ask
// for more of the other one's, and so on.
constexpr int kMostExtensions = 8;

constexpr std::size_t kMostChanges = 12;  // in one hunk: more do not fit a screen

bool endsLine(const ComparedFile& file, std::size_t place) {
  return place == file.original().size() || file.startsLine(place);
}

}  // namespace

TextHunks::TextHunks(const ComparedFile& a, const ComparedFile& b,
                     const std::vector<TextEdit>& edits, std::size_t context)
    : m_a(a), m_b(b), m_edits(edits), m_context(context) {}

std::optional<TextHunk> TextHunks::next() {
  if (!m_pending && m_nextEdit == m_edits.size()) {
    return std::nullopt;
  }
  TextHunk hunk;
  hunk.changes.push_back(m_pending ? std::move(*m_pending) : nextChange());
  m_pending.reset();
  while (m_nextEdit < m_edits.size() && hunk.changes.size() < kMostChanges) {
    ChangedLines lines = nextChange();
    if (!isWithinContext(hunk.changes.back().a.end, lines.a.begin)) {
      m_pending = std::move(lines);
      break;
    }
    hunk.changes.push_back(std::move(lines));
  }
  return hunk;
}

/// The lines of the next edit, and of all that share a line with it.
ChangedLines TextHunks::nextChange() {
  ChangedLines lines;
  lines.firstEdit = m_nextEdit;
  lines.edits.push_back(placesOf(m_edits[m_nextEdit++]));
  lines.a = lines.edits.front().a;
  lines.b = lines.edits.front().b;
  lines.hasLineBreaks = hasLineBreak(m_edits[m_nextEdit - 1]);
  extendBack(lines);
  extendForward(lines);
  while (m_nextEdit < m_edits.size()) {
    const EditPlaces next = placesOf(m_edits[m_nextEdit]);
    if (next.a.begin >= lines.a.end && next.b.begin >= lines.b.end) {
      break;
    }
    lines.hasLineBreaks = lines.hasLineBreaks || hasLineBreak(m_edits[m_nextEdit]);
    ++m_nextEdit;
    lines.edits.push_back(next);
    lines.a.end = next.a.end;
    lines.b.end = next.b.end;
    extendForward(lines);
  }
  m_doneA = lines.a.end;
  m_doneB = lines.b.end;
  return lines;
}

bool TextHunks::hasLineBreak(const TextEdit& edit) const {
  const auto contains = [](std::string_view text, std::size_t begin, std::size_t end) {
    return text.substr(begin, end - begin).find('\n') != std::string_view::npos;
  };
  return contains(m_a.text(), edit.beginA, edit.endA) ||
         contains(m_b.text(), edit.beginB, edit.endB);
}

EditPlaces TextHunks::placesOf(const TextEdit& edit) const {
  const auto places = [](const ComparedFile& file, std::size_t begin, std::size_t end) {
    const std::size_t place = file.placeOf(begin);
    return FileStretch{place, begin < end ? std::max(place, file.endPlaceOf(end)) : place};
  };
  return {places(m_a, edit.beginA, edit.endA), places(m_b, edit.beginB, edit.endB)};
}

/// Makes both stretches start at lines, with the same text before them. Lines of the two files need
/// not start at the same text, because rules remove line breaks: then the nearer start counts, and
/// the other file's line is cut there.
void TextHunks::extendBack(ChangedLines& lines) const {
  std::size_t offsetA = m_a.offsetOf(lines.a.begin);
  std::size_t offsetB = m_b.offsetOf(lines.b.begin);
  if (!lines.hasLineBreaks) {
    const std::size_t startA = std::max(m_a.lineStart(lines.a.begin, true), m_doneA);
    const std::size_t startB = std::max(m_b.lineStart(lines.b.begin, true), m_doneB);
    const std::size_t byA = offsetA - std::min(offsetA, m_a.offsetOf(startA));
    const std::size_t byB = offsetB - std::min(offsetB, m_b.offsetOf(startB));
    lines.a.begin = byA <= byB ? startA : m_a.placeOf(offsetA - byB);
    lines.b.begin = byB <= byA ? startB : m_b.placeOf(offsetB - byA);
    return;
  }
  for (int round = 0; round < kMostExtensions; ++round) {
    lines.a.begin = std::max(m_a.lineStart(lines.a.begin, true), m_doneA);
    const std::size_t byA = offsetA - std::min(offsetA, m_a.offsetOf(lines.a.begin));
    if (byA > 0) {
      offsetA -= byA;
      offsetB -= std::min(byA, offsetB);
      lines.b.begin = m_b.placeOf(offsetB);
    }
    if (!m_a.startsLine(lines.a.begin)) {
      return;
    }
    lines.b.begin = std::max(m_b.lineStart(lines.b.begin, true), m_doneB);
    const std::size_t byB = offsetB - std::min(offsetB, m_b.offsetOf(lines.b.begin));
    if (byB == 0) {
      return;
    }
    offsetB -= byB;
    offsetA -= std::min(byB, offsetA);
    lines.a.begin = m_a.placeOf(offsetA);
    if (!m_b.startsLine(lines.b.begin)) {
      return;
    }
  }
}

/// Makes both stretches end at ends of lines, with the same text behind them, unless that reaches
/// the next edit.
void TextHunks::extendForward(ChangedLines& lines) const {
  const bool isLast = m_nextEdit == m_edits.size();
  const EditPlaces next = isLast
                              ? EditPlaces{{m_a.original().size(), 0}, {m_b.original().size(), 0}}
                              : placesOf(m_edits[m_nextEdit]);
  std::size_t offsetA = m_a.offsetOf(lines.a.end);
  std::size_t offsetB = m_b.offsetOf(lines.b.end);
  if (!lines.hasLineBreaks) {
    const std::size_t endA = m_a.lineEnd(lines.a.end, true);
    const std::size_t endB = m_b.lineEnd(lines.b.end, true);
    const std::size_t byA = m_a.offsetOf(endA) - std::min(offsetA, m_a.offsetOf(endA));
    const std::size_t byB = m_b.offsetOf(endB) - std::min(offsetB, m_b.offsetOf(endB));
    lines.a.end = byA <= byB ? endA : std::max(lines.a.end, m_a.endPlaceOf(offsetA + byB));
    lines.b.end = byB <= byA ? endB : std::max(lines.b.end, m_b.endPlaceOf(offsetB + byA));
    return;
  }
  for (int round = 0; round < kMostExtensions; ++round) {
    lines.a.end = m_a.lineEnd(lines.a.end, true);
    const std::size_t byA = m_a.offsetOf(lines.a.end) - offsetA;
    if (byA > 0) {
      offsetA += byA;
      offsetB += byA;
      lines.b.end = std::max(lines.b.end, m_b.endPlaceOf(std::min(offsetB, m_b.text().size())));
    }
    if (lines.a.end > next.a.begin || !endsLine(m_a, lines.a.end)) {
      return;
    }
    lines.b.end = m_b.lineEnd(lines.b.end, true);
    const std::size_t byB =
        m_b.offsetOf(lines.b.end) - std::min(offsetB, m_b.offsetOf(lines.b.end));
    if (lines.b.end > next.b.begin || byB == 0) {
      return;
    }
    offsetB += byB;
    offsetA += byB;
    lines.a.end = std::max(lines.a.end, m_a.endPlaceOf(std::min(offsetA, m_a.text().size())));
    if (!endsLine(m_b, lines.b.end)) {
      return;
    }
  }
}

/// Whether no more lines of `a` lie between two places than are shown around changes anyway.
bool TextHunks::isWithinContext(std::size_t begin, std::size_t end) const {
  for (std::size_t line = 0; line < 2 * m_context && begin < end; ++line) {
    begin = m_a.pieceEnd(begin);
  }
  return begin >= end;
}

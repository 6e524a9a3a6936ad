#include "cli/diff/HunkLines.h"

#include <algorithm>

#include "cli/diff/TextTokens.h"

namespace {

using Kind = DiffLine::Kind;
using Edits = std::vector<EditPlaces>;

constexpr std::size_t kMostLines = 20;        // of one file in one place
constexpr std::size_t kMostMaskedBytes = 80;  // of each mask
constexpr std::size_t kShortRewriting = 4;    // such as "=3D" for "="

bool isLineBreaks(std::string_view text) {
  return text.find_first_not_of("\r\n") == std::string_view::npos;
}

/// Takes one file's lines apart into what is the same, has changed or is masked.
class Spans {
 public:
  Spans(const ComparedFile& file, bool isA, const Edits& edits)
      : m_file(file), m_isA(isA), m_edits(edits) {}

  std::vector<DiffSpan> of(FileStretch line) {
    m_spans.clear();
    auto mask = m_file.maskAfter(line.begin);
    auto edit = std::partition_point(m_edits.begin(), m_edits.end(), [&](const EditPlaces& places) {
      return stretch(places).end <= line.begin;
    });
    for (std::size_t place = line.begin; place < line.end;) {
      while (edit != m_edits.end() && stretch(*edit).end <= place) {
        ++edit;
      }
      const bool isChanged = edit != m_edits.end() && stretch(*edit).begin <= place;
      if (mask != m_file.masksEnd() && mask->begin <= place) {
        addMask(*mask, isChanged);
        place = std::max(place, mask->end);
        ++mask;
        continue;
      }
      std::size_t end = line.end;
      if (edit != m_edits.end()) {
        end = std::min(end, isChanged ? stretch(*edit).end : stretch(*edit).begin);
      }
      if (mask != m_file.masksEnd()) {
        end = std::min(end, mask->begin);
      }
      add(isChanged ? DiffSpan::Kind::Changed : DiffSpan::Kind::Same,
          m_file.original().substr(place, end - place));
      place = end;
    }
    removeLineEnd();
    return std::move(m_spans);
  }

 private:
  FileStretch stretch(const EditPlaces& places) const { return m_isA ? places.a : places.b; }

  void add(DiffSpan::Kind kind, std::string_view text, std::string_view rule = {}) {
    if (text.empty() && kind != DiffSpan::Kind::Masked) {
      return;
    }
    if (!m_spans.empty() && m_spans.back().kind == kind && kind != DiffSpan::Kind::Masked) {
      m_spans.back().text += text;
    } else {
      m_spans.push_back({kind, std::string(text), std::string(rule)});
    }
  }

  /// A mask that was rewritten, not removed, takes part in the comparison by what it became.
  void addMask(const ComparedFile::Mask& mask, bool isChanged) {
    const std::string_view text = m_file.maskedText(mask);
    const bool isRewritten = mask.textBegin < mask.textEnd;
    if (isRewritten && (isChanged || text.size() <= kShortRewriting)) {
      add(isChanged ? DiffSpan::Kind::Changed : DiffSpan::Kind::Same, text);
    } else if (!isLineBreaks(text)) {
      const std::size_t shown = std::min(text.size(), kMostMaskedBytes);
      add(DiffSpan::Kind::Masked, text.substr(0, wholeCharacterStart(text, shown)),
          m_file.ruleOf(mask));
    }
  }

  /// A line's end is shown only where it is what has changed.
  void removeLineEnd() {
    if (m_spans.empty() || m_spans.back().text.empty() || m_spans.back().text.back() != '\n') {
      return;
    }
    const bool isOnlyChange =
        m_spans.back().kind == DiffSpan::Kind::Changed && m_spans.size() > 1 &&
        std::any_of(m_spans.begin(), m_spans.end(),
                    [](const DiffSpan& span) { return span.kind == DiffSpan::Kind::Same; });
    if (isOnlyChange) {
      return;
    }
    m_spans.back().text.pop_back();
    if (m_spans.back().text.empty()) {
      m_spans.pop_back();
    }
  }

  const ComparedFile& m_file;
  const bool m_isA;
  const Edits& m_edits;
  std::vector<DiffSpan> m_spans;
};

class LineMaker {
 public:
  LineMaker(const ComparedFile& a, const ComparedFile& b, std::size_t context)
      : m_a(a), m_b(b), m_context(context) {}

  std::vector<DiffLine> make(const TextHunk& hunk) {
    addContextBefore(hunk.changes.front());
    for (std::size_t i = 0; i < hunk.changes.size(); ++i) {
      const ChangedLines& change = hunk.changes[i];
      addSide(m_a, true, change);
      addSide(m_b, false, change);
      if (i + 1 < hunk.changes.size()) {
        addContextAfter(change, hunk.changes[i + 1].a.begin, 2 * m_context);
      } else {
        addContextAfter(change, m_a.original().size(), m_context);
      }
    }
    return std::move(m_lines);
  }

 private:
  void addSide(const ComparedFile& file, bool isA, const ChangedLines& change) {
    const FileStretch whole = isA ? change.a : change.b;
    Spans spans(file, isA, change.edits);
    std::size_t count = 0;
    for (std::size_t begin = whole.begin; begin < whole.end; ++count) {
      if (count == kMostLines) {
        m_lines.back().omitted = file.lineNumber(whole.end) - file.lineNumber(begin) +
                                 (file.startsLine(whole.end) ? 0 : 1);
        break;
      }
      const std::size_t end = endOfPiece(file, begin, whole.end);
      DiffLine line = cutLine(file, {begin, end});
      line.kind = isA ? Kind::Removed : Kind::Added;
      (isA ? line.masterLine : line.outputLine) = file.lineNumber(begin);
      line.spans = spans.of({begin, end});
      m_lines.push_back(std::move(line));
      begin = end;
    }
  }

  /// Leaves no crumbs of a line that is cut.
  static std::size_t endOfPiece(const ComparedFile& file, std::size_t begin, std::size_t limit) {
    constexpr std::size_t kCrumb = 60;
    const std::size_t end = std::min(file.pieceEnd(begin), limit);
    const bool leavesCrumb =
        limit - end < kCrumb && !file.startsLine(end) && file.pieceEnd(end) >= limit;
    return leavesCrumb ? limit : end;
  }

  static DiffLine cutLine(const ComparedFile& file, FileStretch stretch) {
    DiffLine line;
    line.isCutBefore = !file.startsLine(stretch.begin);
    line.isCutAfter = stretch.end < file.original().size() && !file.startsLine(stretch.end);
    return line;
  }

  void addContextBefore(const ChangedLines& change) {
    std::vector<std::size_t> starts = {change.a.begin};
    while (starts.size() <= m_context && starts.back() > 0) {
      starts.push_back(m_a.lineStart(starts.back(), false));
    }
    for (std::size_t i = starts.size() - 1; i > 0; --i) {
      addContext({starts[i], starts[i - 1]}, m_a.offsetOf(change.a.begin),
                 m_b.offsetOf(change.b.begin));
    }
  }

  void addContextAfter(const ChangedLines& change, std::size_t limit, std::size_t most) {
    std::size_t begin = change.a.end;
    for (std::size_t count = 0; count < most && begin < limit; ++count) {
      const std::size_t end = std::min(m_a.pieceEnd(begin), limit);
      addContext({begin, end}, m_a.offsetOf(change.a.end), m_b.offsetOf(change.b.end));
      begin = end;
    }
  }

  /// Adds a line of the master; `offsetA` and `offsetB` are nearby offsets that correspond.
  void addContext(FileStretch stretch, std::size_t offsetA, std::size_t offsetB) {
    DiffLine line = cutLine(m_a, stretch);
    line.masterLine = m_a.lineNumber(stretch.begin);
    const std::size_t offset = offsetB + (m_a.offsetOf(stretch.begin) - offsetA);  // may wrap twice
    const std::size_t place = m_b.lineStart(m_b.placeOf(std::min(offset, m_b.text().size())), true);
    if (line.isCutBefore || (m_b.startsLine(place) && m_b.offsetOf(place) == offset)) {
      line.outputLine = m_b.lineNumber(place);
    }
    line.spans = Spans(m_a, true, {}).of(stretch);
    m_lines.push_back(std::move(line));
  }

  const ComparedFile& m_a;
  const ComparedFile& m_b;
  const std::size_t m_context;
  std::vector<DiffLine> m_lines;
};

}  // namespace

std::vector<DiffLine> hunkLines(const ComparedFile& a, const ComparedFile& b, const TextHunk& hunk,
                                std::size_t context) {
  return LineMaker(a, b, context).make(hunk);
}

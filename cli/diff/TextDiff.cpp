#include "cli/diff/TextDiff.h"

#include <algorithm>
#include <string>

#include "cli/diff/ComparedFile.h"
#include "cli/diff/DifferenceBuilder.h"
#include "cli/diff/HunkLines.h"
#include "cli/diff/TextEdits.h"
#include "cli/diff/TextHunks.h"
#include "cli/record/ContentHash.h"

namespace {

/// The words that one file has and the other has not, of edits that share lines.
class ChangedWords {
 public:
  void add(std::string_view text) {
    constexpr std::size_t kMostHashed = 4096;
    m_key += '\0';
    m_key += text.size() <= kMostHashed ? std::string(text) : contentHash(text);
    if (!text.empty() && m_words.size() < kMostWords) {
      m_words += m_words.empty() ? "" : " \u2026 ";
      m_words += text.substr(0, kMostWords);
    }
  }

  const std::string& words() const { return m_words; }
  const std::string& key() const { return m_key; }

 private:
  static constexpr std::size_t kMostWords = 400;

  std::string m_words;
  std::string m_key;
};

/// Without the blanks at its ends: whether a word was removed with the blank before or after it
/// depends on what is around it.
std::string_view trimmed(std::string_view text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// Tells of everything in which two files differ.
class TextDifference {
 public:
  TextDifference(const DiffRequest& request, const ComparedFile& a, const ComparedFile& b)
      : m_a(a), m_b(b), m_options(request.options), m_builder("text", request) {}

  Difference take(const TextEdits& edits) {
    TextHunks hunks(m_a, m_b, edits.edits, m_options.context);
    while (const auto hunk = hunks.next()) {
      add(*hunk, edits.edits);
    }
    Difference difference = m_builder.take();
    difference.isCoarse = edits.isCoarse;
    return difference;
  }

 private:
  void add(const TextHunk& hunk, const std::vector<TextEdit>& edits) {
    DiffHunk shown;
    for (const ChangedLines& lines : hunk.changes) {
      shown.groups.push_back(count(lines, edits));
    }
    const bool isKept = m_builder.keeps(shown);
    if (isKept) {
      shown.lines = hunkLines(m_a, m_b, hunk, m_options.context);
    }
    m_builder.add(std::move(shown), isKept);
  }

  /// The lines are a change of their own: which others are near enough to be shown with them tells
  /// nothing, and would depend on how much context is shown.
  std::string count(const ChangedLines& lines, const std::vector<TextEdit>& edits) {
    ChangedWords removed;
    ChangedWords added;
    for (std::size_t i = lines.firstEdit; i < lines.firstEdit + lines.edits.size(); ++i) {
      const TextEdit& edit = edits[i];
      const std::string_view textA = m_a.text().substr(edit.beginA, edit.endA - edit.beginA);
      const std::string_view textB = m_b.text().substr(edit.beginB, edit.endB - edit.beginB);
      const bool areOnlyBlanks = trimmed(textA) == trimmed(textB);
      removed.add(areOnlyBlanks ? textA : trimmed(textA));
      added.add(areOnlyBlanks ? textB : trimmed(textB));
    }
    return m_builder.count(removed.words(), added.words(), removed.key() + added.key());
  }

  const ComparedFile& m_a;
  const ComparedFile& m_b;
  const DiffOptions& m_options;
  DifferenceBuilder m_builder;
};

void noteNul(const std::string& name, std::string_view bytes, const ComparedFile& file,
             Difference& difference) {
  if (file.original().size() < bytes.size()) {
    difference.notes.push_back(name + " contains a NUL byte; only the text before it was compared");
  }
}

}  // namespace

Difference textDifference(const DiffRequest& request) {
  if (std::max(request.master.size(), request.output.size()) > kLongestComparedText) {
    return onlyNote("texts of 4 GiB and more are not shown", "text");
  }
  const ComparedFile a(request.master, request.patterns());
  const ComparedFile b(request.output, request.patterns());
  if (a.text() == b.text()) {
    return onlyNote("no difference is left: a file has changed since the pair was compared",
                    "text");
  }
  Difference difference = TextDifference(request, a, b).take(compareTexts(a.text(), b.text()));
  noteNul(request.record.master, request.master, a, difference);
  noteNul(request.record.output, request.output, b, difference);
  return difference;
}

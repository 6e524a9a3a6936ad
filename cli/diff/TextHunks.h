#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "cli/diff/ComparedFile.h"
#include "cli/diff/TextEdits.h"

/// A stretch of a file, in places of the original.
struct FileStretch {
  std::size_t begin = 0;
  std::size_t end = 0;

  bool isEmpty() const { return begin == end; }
};

/// What an edit covers of each file; a stretch is empty where the other file has something more.
struct EditPlaces {
  FileStretch a, b;
};

/// Whole shown lines of both files that replace each other. What precedes both stretches is the
/// same text, as is what follows them.
struct ChangedLines {
  FileStretch a, b;
  std::vector<EditPlaces> edits;
  std::size_t firstEdit = 0;   ///< of the text edits
  bool hasLineBreaks = false;  ///< an edit adds or removes one
};

/// Changed lines that are shown together, because only their context lies between them.
struct TextHunk {
  std::vector<ChangedLines> changes;
};

/// Gathers the edits between two texts to hunks, in order.
class TextHunks {
 public:
  /// `context` lines around a change are shown. All other arguments must outlive the object.
  TextHunks(const ComparedFile& a, const ComparedFile& b, const std::vector<TextEdit>& edits,
            std::size_t context);

  /// The next hunk; nothing after the last one.
  std::optional<TextHunk> next();

 private:
  ChangedLines nextChange();
  bool hasLineBreak(const TextEdit& edit) const;
  EditPlaces placesOf(const TextEdit& edit) const;
  void extendBack(ChangedLines& lines) const;
  void extendForward(ChangedLines& lines) const;
  bool isWithinContext(std::size_t begin, std::size_t end) const;

  const ComparedFile& m_a;
  const ComparedFile& m_b;
  const std::vector<TextEdit>& m_edits;
  const std::size_t m_context;
  std::size_t m_nextEdit = 0;
  std::size_t m_doneA = 0;  ///< where the last changed lines end
  std::size_t m_doneB = 0;
  std::optional<ChangedLines> m_pending;  ///< too far from the last hunk
};

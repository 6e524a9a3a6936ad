#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"

// Pairs and their differences as plain text, for reports without a layout of their own. Whatever
// comes from outputs is escaped as on the terminal: each line of a file stays one line, and no
// character of it is invisible, turns others around or is forbidden in XML.

/// Gathers lines up to a number of bytes, and says so when there were more.
class LimitedText {
 public:
  explicit LimitedText(std::size_t most) : m_most(most) {}

  /// Adds a line; false once there is no room.
  bool add(std::string_view line);

  const std::string& text() const { return m_text; }

 private:
  const std::size_t m_most;
  std::string m_text;
  bool m_isFull = false;
};

/// The start of `text`, escaped, with "…" if there is more than `most` bytes of it.
std::string printableStart(std::string_view text, std::size_t most);

/// Adds each line of `text`, which may have any number.
void addLines(std::string_view text, LimitedText& lines);

/// Adds a hunk in the manner of diff -u, but headed by the place that it names:
///
///     @@ line 12 @@
///      <tr>
///     -<td>15.20</td>⟨IdAttribute⟩
///     +<td>16.20</td>⟨IdAttribute⟩
///
/// The lines around the change are for readers who see it for the first time.
void addHunk(const DiffHunk& hunk, bool withContext, LimitedText& lines);

/// Adds how the files of a pair differ, as far as its record tells: a hunk for each of the first
/// places, or the texts around the first one. `shown` are the groups whose change has been shown
/// already; those of the pair are added.
void addDifference(const PairRecord& pair, std::unordered_set<std::string>& shown,
                   LimitedText& lines);

/// What a change replaces by what: "15.20 → 16.20", or what it consists of.
std::string changeWords(std::string_view removed, std::string_view added);

/// Why a pair did not pass, in one line: "15.20 → 16.20 (first of 3 places)".
std::string headline(const PairRecord& pair);

/// The folder of a pair's report; "." if its name has none.
std::string folderOf(const std::string& report);

/// The master, or the report where a format's masters could not be listed.
const std::string& nameOf(const PairRecord& pair);

/// What a run did not verify, and why: a sentence each.
std::vector<std::string> shortfallsOf(const RunRecord& run);

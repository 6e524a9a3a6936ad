#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "cli/diff/PairDiff.h"
#include "cli/record/Difference.h"
#include "cli/terminal/Counts.h"

/// A value that differs, and the line of its file that it starts in (0: not known).
struct DiffValue {
  std::string_view text;
  std::uint64_t line = 0;
};

/// Puts together how two files differ: keeps the first hunks, counts all of them, and counts equal
/// changes together.
class DifferenceBuilder {
 public:
  /// `request`, whose format tells its changes apart from those of others, says how much to keep.
  DifferenceBuilder(std::string kind, const DiffRequest& request);

  void note(std::string sentence) { m_difference.notes.push_back(std::move(sentence)); }
  void setCoarse() { m_difference.isCoarse = true; }

  /// Whether the next hunk is kept. When it is not, its place and lines need not be made.
  bool keepsNext() const;

  /// The same for a hunk whose changes have been counted: some more are kept if one is new.
  bool keeps(const DiffHunk& hunk) const;

  /// Counts one place of a change, and returns the id of its group. `removed` and `added` tell
  /// groups apart as they are, and are shortened for people.
  std::string count(std::string_view removed, std::string_view added);

  /// The same for a change that is told apart by `key`.
  std::string count(std::string_view removed, std::string_view added, std::string_view key);

  /// Adds one hunk whose changes have been counted.
  void add(DiffHunk hunk, bool isKept);

  /// Adds one hunk with its change.
  void add(DiffHunk hunk, std::string_view removed, std::string_view added);
  void add(DiffHunk hunk, std::string_view removed, std::string_view added, std::string_view key);

  /// Notes what is all there is to say of two files that differ, and all that tells their group.
  void noteChange(const std::string& sentence);

  /// Adds one value that became another, with what differs inside them marked.
  void addChange(const std::string& place, const DiffValue& master, const DiffValue& output);
  void addRemoval(const std::string& place, const DiffValue& master);
  void addAddition(const std::string& place, const DiffValue& output);

  std::uint64_t hunkCount() const { return m_difference.hunkCount; }
  Difference take() { return std::move(m_difference); }

 private:
  bool hasRoomFor(std::size_t hunks) const;

  std::string_view m_format;
  DiffOptions m_options;
  std::size_t m_keptBytes = 0;
  Difference m_difference;
  std::unordered_map<std::string, std::size_t> m_changes;  ///< by group
};

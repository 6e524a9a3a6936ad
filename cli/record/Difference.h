#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A stretch of a line of a difference. Its text is bytes of the file, not escaped.
struct DiffSpan {
  enum class Kind : std::uint8_t {
    Same,
    Changed,
    Masked  ///< a normalisation rule took it out of the comparison
  };
  Kind kind = Kind::Same;
  std::string text;
  std::string rule;  ///< that masks the stretch; empty for the other kinds
};

/// A line of a hunk.
struct DiffLine {
  enum class Kind : std::uint8_t { Context, Removed, Added };
  Kind kind = Kind::Context;
  std::uint64_t masterLine = 0;  ///< from 1, in the file as it is; 0: not in the master
  std::uint64_t outputLine = 0;  ///< the same for the output
  bool isCutBefore = false;      ///< the file's line has more text before what is shown
  bool isCutAfter = false;
  std::uint64_t omitted = 0;  ///< lines of this kind that follow and are not shown
  std::vector<DiffSpan> spans;
};

/// One place at which two files differ, with the lines around it.
struct DiffHunk {
  std::string place;  ///< such as "$.rows[3].total" or "row 17, Price"; empty: the lines tell
  std::vector<std::string> groups;  ///< of its changes, in order; equal ones as often as they occur
  std::vector<DiffLine> lines;
};

/// What is changed at one place, without anything that tells where. Equal changes make a group.
struct DiffChange {
  std::string group;    ///< id: the same in every run, on every machine
  std::string removed;  ///< words, cells, a value: what a person would name the change by
  std::string added;
  std::uint64_t count = 0;  ///< places of the pair with this change
};

/// How the two files of a pair differ, ready to be shown by the terminal and by every report.
struct Difference {
  std::string kind;                 ///< "text", "csv", "json", "picture", "bytes", "xml", ...
  std::vector<std::string> notes;   ///< sentences such as "same pixels, other bytes"
  std::vector<DiffHunk> hunks;      ///< the first ones, then those of further changes; in order
  std::uint64_t hunkCount = 0;      ///< of all there are
  bool isCoarse = false;            ///< the files were too large or too different for more detail
  std::vector<DiffChange> changes;  ///< distinct ones, in order of their first occurrence

  static constexpr std::size_t kMostChanges = 1000;  ///< that are told apart
};

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One file that an entry has changed.
struct JournalFile {
  std::string path;    ///< absolute, without links
  std::string before;  ///< hash of its bytes; empty: it was not there
  std::string after;   ///< empty: it was removed
  mode_t mode = 0;     ///< permission bits before; 0 if it was not there
};

/// What one command has changed: enough to take it back.
struct JournalEntry {
  std::uint64_t id = 0;      ///< from 1, in the order of the commands, whatever the clock says
  std::string verb;          ///< "accept", "remove", "undo"
  std::uint64_t undoes = 0;  ///< the entry that an undo takes back
  std::string time;          ///< UTC, "2026-11-23T06:12:00Z"
  std::string user;
  std::string host;
  bool isFinished = false;           ///< false: still at work, or cut off
  std::uint64_t leftOut = 0;         ///< files that it was to change, and did not
  std::vector<JournalFile> files;    ///< to change; once finished, those that were changed
  std::vector<std::string> folders;  ///< created for new files, outermost first
};

/// As the text of an entry's file. Paths below `top` are told relative to it, so that a suite can
/// be moved with its journal.
std::string toText(const JournalEntry& entry, const std::string& top);

/// The entry again. Raises `std::runtime_error`, saying what is wrong, for a text that is not
/// exactly what was written.
JournalEntry entryFromText(std::string_view text, const std::string& top);

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/baseline/JournalEntry.h"

/// The folder that remembers what was done to the masters of a suite:
///
///     entries/7.json   what command 7 changed: written before the first master is touched, and
///                      again once all are
///     content/HASH     bytes that masters had before, each content once
///     .gitignore       keeps all of it out of a repository
///
/// Every file is flushed to disk and takes its name whole.
class Journal {
 public:
  /// Opens the journal in `folder`, which need not be there. Changes nothing.
  explicit Journal(std::string folder);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  const std::string& folder() const { return m_folder; }
  static bool isThere(const std::string& folder);

  /// Creates the folder if it is not there, and keeps every other process out of it until the
  /// object is destroyed. Raises `CommandError` if it cannot be written, or another process is at
  /// work.
  void lock();

  /// Whether another process is at work now, so that an unfinished entry may be its.
  bool isLockedByAnother() const;

  struct Entries {
    std::vector<JournalEntry> whole;               ///< oldest first
    std::map<std::uint64_t, std::string> damaged;  ///< by id, a sentence each
    std::uint64_t last = 0;                        ///< id, of damaged ones too; 0: there is none
  };
  /// Raises `CommandError` if the folder cannot be read.
  Entries entries() const;

  /// Writes an entry, in place of a former one with its id. The journal must be locked, here and
  /// below. Raises `CommandError`.
  void write(const JournalEntry& entry);
  void remove(std::uint64_t id);

  /// Keeps bytes; what is there already stays if it is whole. Flushed by `flushContents`, which is
  /// to be called before an entry names them.
  void keep(const std::string& hash, std::string_view bytes);
  void flushContents();

  /// The bytes kept under `hash`. Raises `CommandError` if they are not there, or damaged.
  std::string content(const std::string& hash) const;

  /// Removes all but the newest `count` entries, and the contents that none of these needs; nothing
  /// while an entry is damaged.
  void trim(std::size_t count);

 private:
  std::string entryPath(std::uint64_t id) const;
  std::string contentPath(const std::string& hash) const;
  void removeUnneeded(const std::vector<JournalEntry>& kept);

  const std::string m_folder;
  const std::string m_top;  ///< that paths in it are relative to
  int m_lock = -1;
  std::set<std::string> m_unflushed;  ///< hashes of contents that have no name yet
};

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/baseline/Journal.h"
#include "cli/baseline/JournalPlace.h"
#include "cli/baseline/MasterChange.h"

/// How an entry of a journal stands.
enum class EntryState {
  Done,
  Undone,      ///< taken back by a later entry
  Incomplete,  ///< some masters could not be changed, or the command was cut off before
  Interrupted  ///< cut off, or still at work: some masters are changed, others may not be
};

/// An entry, and how it stands.
struct JournalLine {
  JournalEntry entry;
  EntryState state = EntryState::Done;
  std::size_t changed = 0;  ///< files that are changed; maybe not all
};

/// The entries of a journal with their states, oldest first.
std::vector<JournalLine> linesOf(const std::vector<JournalEntry>& entries);

/// Changes masters, so that each is at any moment either what it was or what it is to become, and
/// so that it can be taken back.
///
/// New bytes go to a temporary file beside the master, are flushed to disk, and take the master's
/// name. Before the first master is touched, the journal holds the bytes of all and says what is to
/// happen; what a killed process has left half done can be told from it, and taken back.
class Baselines {
 public:
  /// Entries that a journal keeps if the user does not say otherwise.
  static constexpr std::size_t kKeptEntries = 100;

  explicit Baselines(JournalPlace place, std::size_t keptEntries = kKeptEntries);

  const JournalPlace& place() const { return m_place; }

  /// What `apply` would come to. Changes nothing.
  ChangeReport check(const std::vector<MasterChange>& changes, const ContentSource& source) const;

  /// What a command does: "accept", "remove" or "undo", and then of which entry.
  struct Command {
    std::string verb;
    std::uint64_t undoes = 0;
  };

  /// Carries out, as one entry of the journal, those changes that nothing is in the way of. Raises
  /// `CommandError` before any master is touched if the journal cannot be written or is in use.
  ChangeReport apply(const Command& command, const std::vector<MasterChange>& changes,
                     const ContentSource& source);

 private:
  ChangeReport applyWithJournal(const Command& command, const std::vector<MasterChange>& changes,
                                const ContentSource& source);

  JournalPlace m_place;
  std::size_t m_keptEntries;
};

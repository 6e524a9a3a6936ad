#pragma once

#include <cstdint>

#include "cli/baseline/Baselines.h"

struct UndoRequest {
  std::uint64_t id = 0;       ///< 0: the last accept or remove that is not undone
  bool skipsChanged = false;  ///< masters that are no longer what the entry wrote stay as they are
  bool isDryRun = false;
};

struct UndoReport {
  JournalEntry entry;  ///< the one to undo
  ChangeReport changes;
};

/// Takes back what an entry of the journal did, as an entry of its own, which can be undone in
/// turn. Unless told to skip such masters, does nothing at all if one is no longer what the entry
/// wrote, or its former bytes are damaged: the report then holds refusals, and `changes.entry` is
/// 0. Raises `CommandError` if there is no such entry, if it is undone already, or if the journal
/// cannot be read.
UndoReport undo(Baselines& baselines, const UndoRequest& request);

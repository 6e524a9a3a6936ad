#include "cli/baseline/Undo.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/baseline/SafeFiles.h"
#include "cli/system/CommandError.h"

namespace {

using Kind = ChangeOutcome::Kind;

std::string nameOf(const JournalEntry& entry) {
  return entry.verb + ' ' + std::to_string(entry.id);
}

/// The line to take back.
const JournalLine& find(const std::vector<JournalLine>& lines, const Journal::Entries& entries,
                        std::uint64_t id) {
  const bool isLast = id == 0;
  const auto found = std::find_if(lines.rbegin(), lines.rend(), [&](const JournalLine& line) {
    return isLast ? line.entry.verb != "undo" && line.state != EntryState::Undone
                  : line.entry.id == id;
  });
  const std::uint64_t foundId = found != lines.rend() ? found->entry.id : 0;
  if (isLast && !entries.damaged.empty() && entries.damaged.rbegin()->first > foundId) {
    throw CommandError(entries.damaged.rbegin()->second +
                       "; name the entry to undo, as \"orvdiff log\" lists it");
  }
  if (found != lines.rend() && found->state != EntryState::Undone) {
    return *found;
  }
  if (isLast) {
    throw CommandError("there is nothing to undo");
  }
  if (entries.damaged.count(id) != 0) {
    throw CommandError(entries.damaged.at(id));
  }
  throw CommandError(found != lines.rend() ? nameOf(found->entry) + " is undone already"
                                           : "the journal has no entry " + std::to_string(id) +
                                                 "; \"orvdiff log\" lists them");
}

/// A later command that changed `path`, and is not undone; nothing if there is none.
const JournalEntry* laterChange(const std::vector<JournalLine>& lines, const JournalEntry& entry,
                                const std::string& path) {
  const auto later = std::find_if(lines.begin(), lines.end(), [&](const JournalLine& line) {
    const auto& files = line.entry.files;
    return line.entry.id > entry.id && line.entry.verb != "undo" &&
           line.state != EntryState::Undone &&
           std::any_of(files.begin(), files.end(),
                       [&path](const JournalFile& file) { return file.path == path; });
  });
  return later != lines.end() ? &later->entry : nullptr;
}

std::vector<MasterChange> changesToUndo(const JournalEntry& entry) {
  std::vector<MasterChange> changes;
  for (const JournalFile& file : entry.files) {
    changes.push_back({file.path, file.after, file.before, "its former content"});
    if (file.mode != 0) {
      changes.back().mode = file.mode;
    }
  }
  return changes;
}

/// Carries out those changes that nothing was in the way of when they were checked.
void applyPossible(Baselines& baselines, const std::vector<MasterChange>& changes,
                   const ContentSource& former, UndoReport& report) {
  std::vector<MasterChange> possible;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (report.changes.outcomes[i].kind != Kind::Refused) {
      possible.push_back(changes[i]);
      places.push_back(i);
    }
  }
  report.changes.takeOver(places, baselines.apply({"undo", report.entry.id}, possible, former));
  removeEmptyFolders(report.entry.folders);
}

}  // namespace

UndoReport undo(Baselines& baselines, const UndoRequest& request) {
  const Journal journal(baselines.place().folder);
  const Journal::Entries entries = journal.entries();
  const std::vector<JournalLine> lines = linesOf(entries.whole);
  const JournalEntry& entry = find(lines, entries, request.id).entry;
  const std::vector<MasterChange> changes = changesToUndo(entry);
  const ContentSource former = [&journal](const MasterChange& change) {
    return journal.content(change.after);
  };
  UndoReport report = {entry, baselines.check(changes, former)};
  for (ChangeOutcome& outcome : report.changes.outcomes) {
    const JournalEntry* const later =
        outcome.kind == Kind::Refused ? laterChange(lines, entry, outcome.master) : nullptr;
    if (later != nullptr) {
      outcome.why += "; undo " + nameOf(*later) + " first";
    }
  }
  const bool isBlocked = report.changes.count(Kind::Failed) > 0 ||
                         (report.changes.count(Kind::Refused) > 0 && !request.skipsChanged);
  if (!request.isDryRun && !isBlocked) {
    applyPossible(baselines, changes, former, report);
  }
  return report;
}

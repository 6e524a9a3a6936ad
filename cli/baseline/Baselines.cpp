#include "cli/baseline/Baselines.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "cli/baseline/ChangeRun.h"
#include "cli/baseline/SafeFiles.h"
#include "cli/record/ContentHash.h"
#include "cli/system/CommandError.h"
#include "cli/system/TimeStamp.h"

namespace {

/// Whether a file is no longer what it was before the entry.
bool isChanged(const JournalFile& file) {
  std::error_code error;
  const std::string bytes = readWhole(file.path, error);
  return (error == std::errc::no_such_file_or_directory ? "" : contentHash(bytes)) != file.before;
}

JournalEntry startedEntry(const Baselines::Command& command, std::uint64_t id) {
  JournalEntry entry;
  entry.id = id;
  entry.verb = command.verb;
  entry.undoes = command.undoes;
  entry.time = timeStamp();
  const struct passwd* const user = getpwuid(geteuid());
  entry.user = user != nullptr ? user->pw_name : std::to_string(geteuid());
  std::array<char, 256> host = {};
  if (gethostname(host.data(), host.size() - 1) == 0) {
    entry.host = host.data();
  }
  return entry;
}

/// Closes what killed processes have left: none is at work, as the journal is locked. What they
/// changed stays changed, and can be taken back like that of any entry.
void settle(Journal& journal, std::vector<JournalEntry>& entries) {
  for (JournalEntry& entry : entries) {
    if (entry.isFinished) {
      continue;
    }
    std::vector<JournalFile> changed;
    for (std::size_t i = 0; i < entry.files.size(); ++i) {
      removeFile(ChangeRun::temporaryFor(entry.files[i].path, entry.id, i));
      if (isChanged(entry.files[i])) {
        changed.push_back(entry.files[i]);
      }
    }
    entry.leftOut = entry.files.size() - changed.size();
    entry.isFinished = true;
    entry.files = std::move(changed);
    if (entry.files.empty()) {
      removeEmptyFolders(entry.folders);
      journal.remove(entry.id);
    } else {
      journal.write(entry);
    }
  }
}

}  // namespace

std::vector<JournalLine> linesOf(const std::vector<JournalEntry>& entries) {
  std::vector<JournalLine> lines;
  std::map<std::uint64_t, std::size_t> numbers;
  for (const JournalEntry& entry : entries) {
    numbers[entry.id] = lines.size();
    JournalLine line = {entry, EntryState::Done, entry.files.size()};
    if (!entry.isFinished) {
      line.state = EntryState::Interrupted;
      line.changed = static_cast<std::size_t>(
          std::count_if(entry.files.begin(), entry.files.end(), isChanged));
    } else if (entry.leftOut > 0) {
      line.state = EntryState::Incomplete;
    }
    lines.push_back(std::move(line));
  }
  // The last first: an undo that was taken back itself has taken back nothing, and one that is not
  // complete has to be done again.
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
    const auto undone = numbers.find(line->entry.undoes);
    if (line->state == EntryState::Done && undone != numbers.end()) {
      lines[undone->second].state = EntryState::Undone;
    }
  }
  return lines;
}

Baselines::Baselines(JournalPlace place, std::size_t keptEntries)
    : m_place(std::move(place)), m_keptEntries(std::max<std::size_t>(keptEntries, 1)) {}

ChangeReport Baselines::check(const std::vector<MasterChange>& changes,
                              const ContentSource& source) const {
  ChangeRun run(m_place, changes, source);
  run.inspect();
  run.tryContents();
  return run.report();
}

ChangeReport Baselines::apply(const Command& command, const std::vector<MasterChange>& changes,
                              const ContentSource& source) {
  if (!m_place.folder.empty()) {
    return applyWithJournal(command, changes, source);
  }
  ChangeRun run(m_place, changes, source);
  run.inspect();
  run.prepare(static_cast<std::uint64_t>(getpid()));
  run.finish();
  return run.report();
}

ChangeReport Baselines::applyWithJournal(const Command& command,
                                         const std::vector<MasterChange>& changes,
                                         const ContentSource& source) {
  ChangeRun run(m_place, changes, source);
  run.inspect();
  if (!run.hasWork() && !Journal::isThere(m_place.folder)) {
    return run.report();
  }
  Journal journal(m_place.folder);
  journal.lock();
  Journal::Entries former = journal.entries();
  settle(journal, former.whole);
  run.keepFormer(journal);
  if (!run.hasWork()) {
    return run.report();
  }
  JournalEntry entry = startedEntry(command, former.last + 1);
  entry.files = run.files();
  entry.folders = run.missingFolders();
  journal.write(entry);
  run.prepare(entry.id);
  run.finish();
  ChangeReport report = run.report();
  removeEmptyFolders(entry.folders);  // made for masters that did not come to be
  if (!run.hasWork()) {
    journal.remove(entry.id);
    return report;
  }
  report.entry = entry.id;
  const std::size_t planned = entry.files.size();
  entry.files = run.files();
  // All of an undo was possible when it was planned.
  entry.leftOut = entry.undoes == 0 ? planned - entry.files.size()
                                    : changes.size() - report.count(ChangeOutcome::Kind::Done) -
                                          report.count(ChangeOutcome::Kind::AlreadySo);
  entry.isFinished = true;
  try {
    journal.write(entry);
    if (entry.undoes == 0) {
      journal.trim(m_keptEntries);
    }
  } catch (const CommandError& error) {
    report.problems.push_back(std::string(error.what()) +
                              "; the masters are changed, and \"orvdiff undo\" can take it back");
  }
  return report;
}

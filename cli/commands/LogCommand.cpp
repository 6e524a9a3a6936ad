#include <algorithm>
#include <iostream>
#include <string>

#include "cli/baseline/Baselines.h"
#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/Verb.h"
#include "cli/report/ClosingSummary.h"
#include "cli/terminal/Printable.h"

namespace {

struct LogOptions : CommonOptions {
  std::string journal;
};

std::string stateOf(const JournalLine& line, bool isAtWork) {
  switch (line.state) {
    case EntryState::Undone:
      return ", undone";
    case EntryState::Incomplete:
      return ", incomplete";
    case EntryState::Interrupted:
      return isAtWork ? ", at work now" : ", interrupted";
    default:
      return {};
  }
}

std::string countsOf(const JournalLine& line) {
  const std::size_t planned = line.entry.files.size() + line.entry.leftOut;
  return line.changed == planned
             ? countOf(planned, "master")
             : std::to_string(line.changed) + " of " + countOf(planned, "master");
}

const char* signOf(const JournalFile& file) {
  return file.before.empty() ? "+ " : file.after.empty() ? "- " : "* ";
}

void print(const JournalLine& line, bool isAtWork, Verbosity verbosity) {
  constexpr std::size_t kMost = 3;
  const JournalEntry& entry = line.entry;
  std::cout << entry.id << "  " << printable(entry.time) << "  " << entry.verb
            << (entry.undoes != 0 ? " of " + std::to_string(entry.undoes) : "") << ", "
            << countsOf(line) << ", by " << printable(entry.user) << " on " << printable(entry.host)
            << stateOf(line, isAtWork) << '\n';
  const std::size_t shown = verbosity == Verbosity::Quiet     ? 0
                            : verbosity == Verbosity::Verbose ? entry.files.size()
                                                              : std::min(kMost, entry.files.size());
  for (std::size_t i = 0; i < shown; ++i) {
    std::cout << "    " << signOf(entry.files[i]) << printable(shortPath(entry.files[i].path))
              << '\n';
  }
  if (verbosity != Verbosity::Quiet && shown < entry.files.size()) {
    std::cout << "    ... and " << entry.files.size() - shown << " more (-v lists all)\n";
  }
}

/// Newest first: the one that undo would take back stands at the top.
ExitStatus run(const LogOptions& options) {
  const Journal journal(findJournal(options.journal));
  const bool isAtWork = journal.isLockedByAnother();
  const Journal::Entries entries = journal.entries();
  const std::vector<JournalLine> lines = linesOf(entries.whole);
  std::for_each(lines.rbegin(), lines.rend(),
                [&](const JournalLine& line) { print(line, isAtWork, options.verbosity); });
  if (lines.empty() && entries.damaged.empty()) {
    std::cout << "The journal " << printable(journal.folder()) << " is empty.\n";
  }
  std::cout.flush();
  std::vector<std::string> damaged;
  for (const auto& [id, sentence] : entries.damaged) {
    damaged.push_back(sentence);
  }
  printProblems(damaged);
  return damaged.empty() ? kExitPassed : kExitTrouble;
}

}  // namespace

void addLog(CLI::App& app, Performer& chosen) {
  const auto [verb, log] = addVerb<LogOptions>(
      app, chosen, "log", "List what accept, remove and undo did, newest first", run);
  addJournal(verb, log.journal, kJournalToRead);
}

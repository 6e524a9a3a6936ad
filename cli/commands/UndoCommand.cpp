#include <iostream>
#include <string>

#include "cli/baseline/Undo.h"
#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/Verb.h"
#include "cli/terminal/Printable.h"

namespace {

using Kind = ChangeOutcome::Kind;

struct UndoOptions : CommonOptions {
  std::string journal;
  UndoRequest request;
};

const char* whatBecame(const JournalEntry& entry, const std::string& path) {
  for (const JournalFile& file : entry.files) {
    if (file.path == path) {
      return file.before.empty() ? "removed" : file.after.empty() ? "restored" : "as before";
    }
  }
  return "";
}

void printOutcomes(const UndoReport& report, Verbosity verbosity) {
  for (const ChangeOutcome& outcome : report.changes.outcomes) {
    const bool isStopped = outcome.kind == Kind::Refused || outcome.kind == Kind::Failed;
    if (isStopped || (outcome.kind == Kind::Done && verbosity != Verbosity::Quiet)) {
      std::cout << "    " << printable(shortPath(outcome.master)) << ": "
                << (isStopped ? printable(outcome.why) : whatBecame(report.entry, outcome.master))
                << '\n';
    }
  }
}

ExitStatus run(const UndoOptions& options) {
  Baselines baselines({{}, findJournal(options.journal)});
  const UndoReport report = undo(baselines, options.request);
  const ChangeReport& changes = report.changes;
  const std::size_t stopped = changes.count(Kind::Refused) + changes.count(Kind::Failed);
  const std::string name = report.entry.verb + ' ' + std::to_string(report.entry.id) + " of " +
                           report.entry.time + " by " + report.entry.user;
  printOutcomes(report, options.verbosity);
  if (options.request.isDryRun) {
    std::cout << "Would undo " << printable(name) << ": "
              << countOf(changes.count(Kind::Done), "master") << '\n';
  } else if (changes.entry == 0 && stopped > 0) {
    std::cout << "Undid nothing of " << printable(name) << ": " << countOf(stopped, "master")
              << (stopped == 1 ? " is" : " are")
              << " in the way; --skip-changed leaves what has changed since\n";
  } else {
    std::cout << "Undid " << printable(name) << ": "
              << countOf(changes.count(Kind::Done), "master");
    if (stopped > 0) {
      std::cout << ", " << stopped << " left as " << (stopped == 1 ? "it is" : "they are");
    }
    std::cout << '\n';
  }
  return finishChanges(changes);
}

}  // namespace

void addUndo(CLI::App& app, Performer& chosen) {
  const auto [verb, undo] = addVerb<UndoOptions>(
      app, chosen, "undo", "Take back the last accept or remove, or another one", run);
  verb.add_option("ID", undo.request.id, "The entry that \"orvdiff log\" lists (default: the last)")
      ->check(CLI::Validator(
          [](const std::string& word) {
            const bool isNumber = word.find_first_not_of("0123456789") == std::string::npos &&
                                  word.find_first_not_of('0') != std::string::npos;
            return isNumber ? "" : '"' + word + "\" is not the number of an entry";
          },
          ""))
      ->type_name("");
  verb.add_flag("-n,--dry-run", undo.request.isDryRun, "Say what would happen, and change nothing");
  verb.add_flag("--skip-changed", undo.request.skipsChanged,
                "Leave masters that have changed since, instead of undoing nothing");
  addJournal(verb, undo.journal, kJournalToRead);
}

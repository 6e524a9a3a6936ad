#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "cli/baseline/Baselines.h"
#include "cli/commands/Options.h"

namespace CLI {
class App;
}  // namespace CLI

/// How a verb may change masters.
struct ChangeOptions {
  std::string journal;  ///< folder; empty: in the top of the suite; "none": keep none
  std::size_t keptEntries = Baselines::kKeptEntries;
  bool isDryRun = false;
  bool isAgreed = false;  ///< the user need not be asked
};

/// Adds --journal.
void addJournal(CLI::App& verb, std::string& journal, const char* help);

/// Adds options for all of them.
void addChangeOptions(CLI::App& verb, ChangeOptions& options);

/// Help for --journal of verbs that read it.
inline constexpr const char* kJournalToRead =
    "The journal (default: the .orvdiff in the working folder, above it or beside it)";

/// Makes a path that the user gave independent of the working folder; empty stays empty.
void makeAbsolute(std::string& path);

/// The same for the journal, unless it is to be none.
void makeAbsolutePlace(ChangeOptions& options);

/// An absolute path as seen from the folder `from` (empty: the working folder), if that is shorter
/// and leads to the same file.
std::string shortPath(const std::string& path, const std::string& from = {});

/// Raises `CommandError` if the user would have to be asked and there is no terminal to do so. To
/// be called before long work.
void requireConsent(const ChangeOptions& options);

/// What a verb does to masters, in words.
struct ChangeWording {
  const char* todo;       ///< heading of what is to happen: "To accept"
  const char* verb;       ///< "accept"
  const char* done;       ///< "Accepted"
  const char* noun;       ///< of one thing it happens to: "output"
  bool listsDone = true;  ///< to a user who agreed before seeing a list
};

/// Shows what would happen, which `check` finds out, and asks, unless the user has agreed already;
/// then calls `apply`. Tells what came of it, and how to take it back.
ExitStatus carryOut(const ChangeOptions& options, const CommonOptions& common,
                    const ChangeWording& wording, const JournalPlace& place,
                    const std::function<ChangeReport()>& check,
                    const std::function<ChangeReport()>& apply);

/// Both reports as one, `first` first.
ChangeReport joined(ChangeReport first, const ChangeReport& second);

/// Says the report's problems; returns the status that changes with these outcomes end with.
ExitStatus finishChanges(const ChangeReport& report);
